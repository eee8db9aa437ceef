// What drivers answer: errors and their order, lost connections, counts that are none, catalogues.
#include <gtest/gtest.h>

#include <kaputil/ado/error.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "replay.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

// Number, state and server's number of every error, in their order.
std::string errorsOf(const Ref<Connection>& connection) {
    std::string all;
    const auto errors = connection->Errors();
    for (std::int32_t i = 0; i < errors->Count(); ++i) {
        const auto error = errors->Item(i);
        all += (all.empty() ? "" : "; ") + std::to_string(error->Number()) + " " +
               error->SQLState().utf8() + " " + std::to_string(error->NativeError()) + " " +
               error->Description().utf8();
    }
    return all;
}

TEST(ReplayedAnswers, KeepTheServersMessagesInItsOrder) {
    // A procedure raises because of the violation; FreeTDS tells that first.
    test::Replay replay(R"(
> EXEC salva
error 42000 50000 [FreeTDS][SQL Server][Conti] chiusi
error 23000 2627 [FreeTDS][SQL Server]Violation of PRIMARY KEY constraint
error 01000 3621 [FreeTDS][SQL Server]The statement has been terminated.
)");
    const auto connection = replay.open();
    EXPECT_EQ(raisedBy([&] { connection->Execute(u"EXEC salva"); }), errors::kIntegrity);
    EXPECT_EQ(
        errorsOf(connection),
        "-2147217873 23000 2627 Violation of PRIMARY KEY constraint; "
        "-2147217900 42000 50000 [Conti] chiusi; 0 01000 3621 The statement has been terminated.");
}

TEST(ReplayedAnswers, StayInTheOrderOfADriverThatKeepsIt) {
    test::Replay replay(R"(
> EXEC salva
error 42000 50000 [Maker][Driver][SQL Server][Conti] chiusi
error 23000 2627 [Maker][Driver][SQL Server]Violation
)");
    const auto connection = replay.open();
    EXPECT_EQ(raisedBy([&] { connection->Execute(u"EXEC salva"); }), errors::kCommandText);
    EXPECT_EQ(errorsOf(connection),
              "-2147217900 42000 50000 [Conti] chiusi; -2147217873 23000 2627 Violation");
}

TEST(ReplayedAnswers, AreTakenBehindAnErrorAndBeforeOne) {
    test::Replay replay(R"(
> SELECT 1; SELECT 1/0; SELECT 2
columns a int
row 1
error 22012 8134 [FreeTDS][SQL Server]Divide by zero error encountered.
columns a int
row 2
)");
    const auto connection = replay.open();
    std::vector<Ref<Recordset>> answers;
    EXPECT_EQ(raisedBy([&] { connection->executeAll(u"SELECT 1; SELECT 1/0; SELECT 2", answers); }),
              errors::kCommandText);
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(shown(fieldOf(answers[1], 0)), "Long 2");
}

TEST(ReplayedAnswers, ErrorsOfTransactSqlAreKnownByTheServersNumbers) {
    struct Case {
        int native;
        const char* state;  // that the driver gives
        std::int32_t number;
    };
    const Case cases[] = {
        {1205, "HY000", errors::kConcurrency},      {1222, "42000", errors::kTimeout},
        {2628, "HY000", errors::kTruncated},        {8169, "42000", errors::kDataTypeMismatch},
        {701, "42000", errors::kUnspecified},       {823, "42000", errors::kUnspecified},
        {824, "42000", errors::kUnspecified},       {1101, "42000", errors::kUnspecified},
        {8114, "42000", errors::kDataTypeMismatch}, {242, "22008", errors::kDataTypeMismatch},
        {248, "22003", errors::kDataTypeMismatch},  {208, "37000", errors::kUnknownObject},
        {99999, "42000", errors::kCommandText}};
    for (const Case& each : cases) {
        test::Replay replay("> X\nerror " + std::string(each.state) + " " +
                            std::to_string(each.native) + " [FreeTDS][SQL Server]text\n");
        const auto connection = replay.open();
        EXPECT_EQ(raisedBy([&] { connection->Execute(u"X"); }), each.number) << each.native;
    }
}

TEST(ReplayedAnswers, OfAStatementWithoutCountAreNone) {
    test::Replay replay(R"(
> CREATE TABLE t (a int)
none -1
> UPDATE t SET a = 1
none 0
> DELETE FROM t
count 3
)");
    const auto connection = replay.open();
    Variant count;
    connection->Execute(u"CREATE TABLE t (a int)", count);
    EXPECT_EQ(shown(count), "Long -1");
    connection->Execute(u"UPDATE t SET a = 1", count);
    EXPECT_EQ(shown(count), "Long 0");
    connection->Execute(u"DELETE FROM t", count);
    EXPECT_EQ(shown(count), "Long 3");
}

TEST(ReplayedAnswers, BehindTheFailureOfAFirstStatementAreAskedForAsTheDriverCan) {
    test::Replay replay(R"(
driver libtdsodbc.so
> SELECT 1 AS kap_no_rows WHERE 1 = 0; EXEC salva
columns kap_no_rows int
error 23000 2627 [FreeTDS][SQL Server]Violation
then
error 42000 50000 [FreeTDS][SQL Server]a
then
error 42000 50000 [FreeTDS][SQL Server]b
columns n int
row 7
> CREATE VIEW v AS SELECT 1 AS a
none -1
> IF @@ROWCOUNT = 0 PRINT 'x'
none -1
)");
    const auto connection = replay.open();
    std::vector<Ref<Recordset>> answers;
    EXPECT_EQ(raisedBy([&] { connection->executeAll(u"EXEC salva", answers); }),
              errors::kIntegrity);
    EXPECT_EQ(errorsOf(connection),
              "-2147217873 23000 2627 Violation; -2147217900 42000 50000 a; "
              "-2147217900 42000 50000 b");
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(shown(fieldOf(answers[0], 0)), "Long 7");
    connection->Execute(u"CREATE VIEW v AS SELECT 1 AS a");
    connection->Execute(u"IF @@ROWCOUNT = 0 PRINT 'x'");
}

TEST(ReplayedAnswers, OfATransactionThatAnErrorHasEndedLetItBeUndone) {
    test::Replay replay(R"(
> !autocommit off
> UPDATE t SET a = 1
error 40001 1205 [FreeTDS][SQL Server]deadlock victim
> !rollback
error 25000 3903 [FreeTDS][SQL Server]no corresponding BEGIN TRANSACTION
> SELECT @@TRANCOUNT
columns n int
row 0
> !autocommit on
> UPDATE t SET a = 2
count 1
)");
    const auto connection = replay.open();
    connection->BeginTrans();
    EXPECT_EQ(raisedBy([&] { connection->Execute(u"UPDATE t SET a = 1"); }), errors::kConcurrency);
    connection->RollbackTrans();
    connection->Execute(u"UPDATE t SET a = 2");
}

TEST(ReplayedAnswers, TellAFailedUndoingOfATransactionThatIsThereYet) {
    test::Replay replay(R"(
> !autocommit off
> !rollback
error HY000 0 [FreeTDS][SQL Server]busy
> SELECT @@TRANCOUNT
columns n int
row 1
> !rollback
)");
    const auto connection = replay.open();
    connection->BeginTrans();
    EXPECT_EQ(raisedBy([&] { connection->RollbackTrans(); }), errors::kUnspecified);
}

constexpr const char* kLostSentence =
    "The connection to the database server has been lost (Read from the server failed). Close it "
    "and open it again.";

TEST(ReplayedAnswers, ALostConnectionSaysSoInTheCallThatMeetsIt) {
    // FreeTDS has this state; others tell of it by the connection's attribute only.
    for (const char* state : {"08S01 20004", "HY000 0", "42000 20006"}) {
        test::Replay replay("> X\nerror " + std::string(state) +
                            " [FreeTDS][SQL Server]Read from the server failed\nlost\n");
        const auto connection = replay.open();
        EXPECT_EQ(raisedBy([&] { connection->Execute(u"X"); }), errors::kUnspecified) << state;
        EXPECT_EQ(connection->Errors()->Item(0)->SQLState().utf8(), "08S01");
        EXPECT_EQ(connection->Errors()->Item(0)->Description().utf8(), kLostSentence);
        EXPECT_EQ(raisedBy([&] { connection->Execute(u"X"); }), errors::kUnspecified) << state;
        EXPECT_EQ(raisedBy([&] { connection->BeginTrans(); }), errors::kUnspecified) << state;
    }
}

TEST(ReplayedAnswers, ALostConnectionSaysSoWhenATransactionEnds) {
    test::Replay replay(R"(
> !autocommit off
> !commit
error HY000 0 [FreeTDS][SQL Server]Read from the server failed
lost
)");
    const auto connection = replay.open();
    connection->BeginTrans();
    EXPECT_EQ(raisedBy([&] { connection->CommitTrans(); }), errors::kUnspecified);
    EXPECT_EQ(connection->Errors()->Item(0)->SQLState().utf8(), "08S01");
    EXPECT_EQ(
        connection->Errors()->Item(0)->Description().utf8(),
        std::string(kLostSentence) + " Whether the transaction has been committed is not known.");
}

TEST(ReplayedAnswers, ALostConnectionSaysSoToTheWritingOfARow) {
    test::Replay replay(R"(
facts t
fact id int key 1
> SELECT * FROM t
columns id int
row 1
> DELETE FROM "t" OUTPUT 1 WHERE "id" = ?
? int 1
error 08S01 20004 [FreeTDS][SQL Server]Read from the server failed
lost
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    EXPECT_EQ(raisedBy([&] { rows->Delete(); }), errors::kUnspecified);
    EXPECT_EQ(connection->Errors()->Item(0)->Description().utf8(), kLostSentence);
}

constexpr const char* kTypeRow =
    "columns a varchar, b int, c int, d varchar, e varchar, f varchar, g int, h int, i int, j int, "
    "k int, l int\nrow int | 4 | 10 | NULL | NULL | NULL | 1 | 0 | 2 | 0 | 0 | 0\n";

TEST(ReplayedAnswers, TypesAreAskedForByATextWhenTheDriverFails) {
    test::Replay replay(std::string(R"(
> !types
error HY000 0 [FreeTDS][SQL Server]
> EXEC sp_datatype_info @ODBCVer = 3
)") + kTypeRow);
    const auto connection = replay.open();
    const auto types = connection->OpenSchema(SchemaEnum::adSchemaProviderTypes);
    EXPECT_EQ(shown(fieldOf(types, u"TYPE_NAME")), "String int");
}

TEST(ReplayedAnswers, NamesAreNotEscapedAndThoseOfOthersAreLeftOut) {
    test::Replay replay(R"(
> !tables vtx_TabPro
columns a varchar, b varchar, c varchar, d varchar, e varchar
row azienda | dbo | vtx_TabPro | TABLE | NULL
row azienda | dbo | vtxxTabPro | TABLE | NULL
> !columns %
columns a varchar, b varchar, c varchar, d varchar, e int, f varchar, g int, h int, i int, j int, k int,
  l varchar, m varchar, n int, o int, p int, q int
row azienda | dbo | t | a | 4 | int | 10 | 4 | 0 | 10 | 0 | NULL | NULL | 4 | 0 | 0 | 1
> !keys vtx_TabPro
columns a varchar, b varchar, c varchar, d varchar, e int, f varchar
row azienda | dbo | vtx_TabPro | Codice | 1 | PK
)");
    const auto connection = replay.open();
    const auto restricted = [](const char16_t* table) {
        return Variant(Array::ofVariants({Variant(), Variant(), Variant(table)}));
    };
    const auto tables =
        connection->OpenSchema(SchemaEnum::adSchemaTables, restricted(u"vtx_TabPro"));
    EXPECT_EQ(tables->RecordCount(), 1);
    EXPECT_EQ(connection->OpenSchema(SchemaEnum::adSchemaColumns)->RecordCount(), 1);
    const auto keys =
        connection->OpenSchema(SchemaEnum::adSchemaPrimaryKeys, restricted(u"vtx_TabPro"));
    EXPECT_EQ(shown(fieldOf(keys, u"COLUMN_NAME")), "String Codice");
}

}  // namespace
}  // namespace kap::ado
