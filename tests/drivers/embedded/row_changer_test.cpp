#include "drivers/embedded/row_changer.hpp"

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"

namespace kap::ado::embedded {
namespace {

using enum DataTypeEnum;
using test::errorOf;
using test::openSession;
using test::rowsOf;

ColumnValue integer(const char* column, std::int64_t value) {
    return {column, adInteger, 255, value};
}
ColumnValue text(const char* column, const char* value) {
    return {column, adVarChar, 255, std::string(value)};
}
ColumnValue null(const char* column) {
    return {column, adVarChar, 255, std::monostate{}};
}

RowChange change(RowChange::Kind kind, std::vector<ColumnValue> values,
                 std::vector<ColumnValue> criteria = {}, std::vector<std::string> readBack = {}) {
    return {kind, "t", std::move(values), std::move(criteria), std::move(readBack), {}};
}

class RowChangerTest : public ::testing::Test {
protected:
    RowChangerTest() {
        (void)session_->execute(
            "CREATE TABLE t (id int IDENTITY PRIMARY KEY, name varchar(5), n int NOT NULL "
            "DEFAULT 7, code char(4), price decimal(6,2), made datetime, small tinyint, "
            "mark real, bytes varbinary(3), guid uniqueidentifier, v timestamp)");
        (void)session_->execute("INSERT INTO t (name, n) VALUES ('uno', 1), ('due', 2)");
    }

    ServerMessage refusalOf(const RowChange& refused) {
        return errorOf([&] { (void)session_->apply(refused); }).value_or(ServerMessage{});
    }
    ServerMessage insertionRefusal(ColumnValue value) {
        return refusalOf(change(RowChange::Kind::Insert, {std::move(value)}));
    }

    std::unique_ptr<Session> session_ = openSession(":memory:row changer");
};

TEST_F(RowChangerTest, InsertsARowAndReadsBackWhatTheDatabaseSet) {
    const ChangeOutcome outcome = session_->apply(
        change(RowChange::Kind::Insert, {text("name", "tre")}, {}, {"id", "n", "v", "name"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    ASSERT_EQ(outcome.readBack.size(), 4U);
    EXPECT_EQ(test::shown(outcome.readBack[0]), "3");
    EXPECT_EQ(test::shown(outcome.readBack[1]), "7");
    EXPECT_EQ(test::shown(outcome.readBack[2]), "0x00000000000007D3");
    EXPECT_EQ(test::shown(outcome.readBack[3]), "'tre'");
}

TEST_F(RowChangerTest, InsertsARowOfDefaults) {
    EXPECT_EQ(session_->apply(change(RowChange::Kind::Insert, {})).rowsTouched, 1);
    EXPECT_EQ(rowsOf(*session_, "SELECT id, name, n FROM t WHERE id = 3"), "3, Null, 7");
}

TEST_F(RowChangerTest, CallsTheFunctionsThatATableIsMadeOf) {
    (void)session_->execute(
        "CREATE FUNCTION doubled (@n int) RETURNS int AS BEGIN RETURN @n * 2 END");
    (void)session_->execute(
        "CREATE TABLE f (a int IDENTITY, n int DEFAULT dbo.doubled(4) CHECK (dbo.doubled(n) < "
        "100), "
        "d AS dbo.doubled(n), s int DEFAULT scope_identity(), p int DEFAULT @@procid, l int "
        "DEFAULT "
        "@@nestlevel)");
    RowChange insertion = change(RowChange::Kind::Insert, {}, {}, {"n", "d", "p", "l"});
    insertion.table = "f";
    const ChangeOutcome outcome = session_->apply(insertion);
    ASSERT_EQ(outcome.readBack.size(), 4U);
    EXPECT_EQ(test::shown(outcome.readBack[0]), "8");
    EXPECT_EQ(test::shown(outcome.readBack[1]), "16");
    EXPECT_EQ(test::shown(outcome.readBack[2]), "0");
    EXPECT_EQ(test::shown(outcome.readBack[3]), "0");
    insertion.values = {integer("n", 50)};
    EXPECT_EQ(refusalOf(insertion).nativeNumber, 547);
}

TEST_F(RowChangerTest, ATableOfOneColumnTakesDefaultsToo) {
    (void)session_->execute("CREATE TABLE one (a int DEFAULT 4)");
    RowChange insertion = change(RowChange::Kind::Insert, {}, {}, {"a"});
    insertion.table = "one";
    EXPECT_EQ(test::shown(session_->apply(insertion).readBack.at(0)), "4");
}

TEST_F(RowChangerTest, ATriggerThatCatchesAnErrorUndoesTheRowAndTheTransaction) {
    (void)session_->execute(
        "CREATE TRIGGER tr ON t FOR INSERT AS BEGIN TRY SELECT 1/0 END TRY BEGIN CATCH PRINT 'x' "
        "END CATCH");
    const RowChange insertion = change(RowChange::Kind::Insert, {text("name", "tre")});
    EXPECT_EQ(errorOf([&] { (void)session_->apply(insertion); }).value().text, "x");
    EXPECT_EQ(rowsOf(*session_, "SELECT count(*) FROM t"), "2");

    session_->begin();
    (void)session_->execute("DELETE t");
    EXPECT_THROW((void)session_->apply(insertion), DriverError);
    EXPECT_EQ(session_->transactionDepth(), 0);
    EXPECT_EQ(rowsOf(*session_, "SELECT count(*) FROM t"), "2");
}

TEST_F(RowChangerTest, WritesATableThatSomebodyElseHasChanged) {
    (void)session_->execute("INSERT t (name) OUTPUT inserted.name VALUES ('tre')");
    (void)openSession(":memory:row changer")
        ->execute("ALTER TABLE t DROP COLUMN made; ALTER TABLE t ADD note varchar(5)");
    const RowChange insertion = change(RowChange::Kind::Insert, {text("note", "ok")});
    EXPECT_EQ(session_->apply(insertion).rowsTouched, 1);
}

TEST_F(RowChangerTest, ReadsAWholeNumberOfAFloatBackAsAFloat) {
    const ChangeOutcome outcome = session_->apply(
        change(RowChange::Kind::Update, {integer("mark", 42)}, {integer("id", 2)}, {"mark"}));
    EXPECT_EQ(outcome.readBack.at(0), Value(42.0));
}

TEST_F(RowChangerTest, UpdatesTheRowThatTheCriteriaDescribe) {
    const ChangeOutcome outcome =
        session_->apply(change(RowChange::Kind::Update, {text("name", "dos")},
                               {integer("id", 2), text("name", "due")}, {"v"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    EXPECT_EQ(test::shown(outcome.readBack.at(0)), "0x00000000000007D3");
    EXPECT_EQ(rowsOf(*session_, "SELECT id, name FROM t ORDER BY id"), "1, 'uno'; 2, 'dos'");
}

TEST_F(RowChangerTest, TouchesNothingWhenTheRowIsNotAsItWas) {
    EXPECT_EQ(session_
                  ->apply(change(RowChange::Kind::Update, {text("name", "dos")},
                                 {integer("id", 2), text("name", "tre")}))
                  .rowsTouched,
              0);
    EXPECT_EQ(rowsOf(*session_, "SELECT name FROM t WHERE id = 2"), "'due'");
}

TEST_F(RowChangerTest, CriteriaCompareTextExactly) {
    for (const char* other : {"UNO", "uno ", "unò"}) {
        EXPECT_EQ(
            session_
                ->apply(change(RowChange::Kind::Update, {integer("n", 5)}, {text("name", other)}))
                .rowsTouched,
            0)
            << other;
    }
    EXPECT_EQ(
        session_->apply(change(RowChange::Kind::Update, {integer("n", 5)}, {text("name", "uno")}))
            .rowsTouched,
        1);
}

TEST_F(RowChangerTest, InCriteriaNullEqualsNull) {
    (void)session_->execute("UPDATE t SET name = NULL WHERE id = 1");
    EXPECT_EQ(session_->apply(change(RowChange::Kind::Update, {integer("n", 5)}, {null("name")}))
                  .rowsTouched,
              1);
    EXPECT_EQ(rowsOf(*session_, "SELECT n FROM t ORDER BY id"), "5; 2");
}

TEST_F(RowChangerTest, TheRowVersionCanBeACriterion) {
    const std::string version("\0\0\0\0\0\0\x07\xD1", 8);
    const RowChange update = change(RowChange::Kind::Update, {integer("n", 5)},
                                    {integer("id", 1), {"v", adBinary, 255, Blob{version}}});
    EXPECT_EQ(session_->apply(update).rowsTouched, 1);
    EXPECT_EQ(session_->apply(update).rowsTouched, 0);
}

TEST_F(RowChangerTest, DeletesTheRowThatTheCriteriaDescribe) {
    EXPECT_EQ(session_->apply(change(RowChange::Kind::Delete, {}, {integer("id", 1)})).rowsTouched,
              1);
    EXPECT_EQ(rowsOf(*session_, "SELECT id FROM t"), "2");
}

TEST_F(RowChangerTest, ReadsARowAgainWithoutWriting) {
    const ChangeOutcome outcome =
        session_->apply(change(RowChange::Kind::Read, {}, {integer("id", 2)}, {"name", "n", "v"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    EXPECT_EQ(test::shown(outcome.readBack.at(0)), "'due'");
    EXPECT_EQ(test::shown(outcome.readBack.at(1)), "2");
    EXPECT_EQ(test::shown(outcome.readBack.at(2)), "0x00000000000007D2");
}

TEST_F(RowChangerTest, ReadingARowThatIsGoneTouchesNothing) {
    const ChangeOutcome outcome =
        session_->apply(change(RowChange::Kind::Read, {}, {integer("id", 9)}, {"name"}));
    EXPECT_EQ(outcome.rowsTouched, 0);
    EXPECT_TRUE(outcome.readBack.empty());
}

TEST_F(RowChangerTest, CriteriaThatFitSeveralRowsWriteNothing) {
    (void)session_->execute("UPDATE t SET n = 3");
    for (const auto kind : {RowChange::Kind::Update, RowChange::Kind::Delete}) {
        std::vector<ColumnValue> values;
        if (kind == RowChange::Kind::Update) {
            values.push_back(text("name", "x"));
        }
        const ServerMessage error = refusalOf(change(kind, values, {integer("n", 3)}));
        EXPECT_EQ(error.number, errors::kUnspecified);
        EXPECT_EQ(error.text,
                  "Key column information is insufficient or incorrect. Too many rows were "
                  "affected by update.");
    }
    EXPECT_EQ(rowsOf(*session_, "SELECT name FROM t ORDER BY id"), "'uno'; 'due'");
}

TEST_F(RowChangerTest, WithinATransactionOnlyTheRefusedChangeIsUndone) {
    session_->begin();
    (void)session_->apply(change(RowChange::Kind::Insert, {text("name", "tre")}));
    (void)session_->execute("UPDATE t SET n = 3");
    (void)refusalOf(change(RowChange::Kind::Delete, {}, {integer("n", 3)}));
    EXPECT_EQ(session_->transactionDepth(), 1);
    session_->commit();
    EXPECT_EQ(rowsOf(*session_, "SELECT name FROM t ORDER BY id"), "'uno'; 'due'; 'tre'");
}

TEST_F(RowChangerTest, ARolledBackTransactionTakesItsChangesBack) {
    session_->begin();
    (void)session_->apply(change(RowChange::Kind::Delete, {}, {integer("id", 1)}));
    session_->rollback();
    EXPECT_EQ(rowsOf(*session_, "SELECT id FROM t ORDER BY id"), "1; 2");
}

TEST_F(RowChangerTest, ValuesAreBroughtToTheColumnsType) {
    (void)session_->apply(
        change(RowChange::Kind::Insert,
               {{"code", adChar, 255, std::string("ab")},
                {"price", adNumeric, 3, std::int64_t{12345}},
                {"made", adDBTimeStamp, 255, 45351.500001},
                {"mark", adSingle, 255, 0.1},
                {"bytes", adVarBinary, 255, Blob{std::string("\x01\x02")}},
                {"guid", adGUID, 255, std::string("6f9619ff-8b86-d011-b42d-00c04fc964ff")}}));
    const Result row =
        session_->execute("SELECT code, price, made, mark, bytes, guid FROM t WHERE id = 3").back();
    EXPECT_EQ(test::shown(test::cellOf(row, 0, 0)), "'ab  '");
    EXPECT_EQ(row.rows[1].integer(0), 1235);
    EXPECT_DOUBLE_EQ(row.rows[2].real(0), 45351.5 + 26.0 / 300 / 86400);
    EXPECT_EQ(row.rows[3].real(0), static_cast<double>(0.1F));
    EXPECT_EQ(test::shown(test::cellOf(row, 4, 0)), "0x0102");
    EXPECT_EQ(test::shown(test::cellOf(row, 5, 0)), "'6F9619FF-8B86-D011-B42D-00C04FC964FF'");
}

TEST_F(RowChangerTest, RefusesTextThatIsTooLong) {
    const ServerMessage error = insertionRefusal(text("name", "troppo"));
    EXPECT_EQ(error.nativeNumber, 8152);
    EXPECT_EQ(error.number, errors::kTruncated);
    EXPECT_EQ(error.text, "String or binary data would be truncated.");
}

TEST_F(RowChangerTest, RefusesBytesThatAreTooMany) {
    EXPECT_EQ(insertionRefusal({"bytes", adVarBinary, 255, Blob{std::string("abcd")}}).nativeNumber,
              8152);
}

TEST_F(RowChangerTest, RefusesNumbersThatAreTooLarge) {
    EXPECT_EQ(insertionRefusal({"price", adNumeric, 2, std::int64_t{1000000}}).nativeNumber, 8115);
    EXPECT_EQ(insertionRefusal(integer("small", 256)).nativeNumber, 220);
}

TEST_F(RowChangerTest, RefusesNullInANotNullColumn) {
    const ServerMessage error = insertionRefusal(null("n"));
    EXPECT_EQ(error.nativeNumber, 515);
    EXPECT_EQ(
        error.text,
        "Cannot insert the value NULL into column 'n', table 'memory.dbo.t'; column does not allow "
        "nulls. INSERT fails.");
    EXPECT_EQ(
        refusalOf(change(RowChange::Kind::Update, {null("n")}, {integer("id", 1)})).text,
        "Cannot insert the value NULL into column 'n', table 'memory.dbo.t'; column does not allow "
        "nulls. UPDATE fails.");
}

TEST_F(RowChangerTest, RefusesWhatTheDatabaseSetsItself) {
    EXPECT_EQ(insertionRefusal(integer("id", 9)).nativeNumber, 544);
    EXPECT_EQ(insertionRefusal({"v", adBinary, 255, Blob{std::string(8, 'x')}}).nativeNumber, 273);
    EXPECT_EQ(refusalOf(change(RowChange::Kind::Update, {integer("id", 9)}, {integer("id", 1)}))
                  .nativeNumber,
              8102);
    EXPECT_EQ(
        refusalOf(change(RowChange::Kind::Update, {{"v", adBinary, 255, Blob{std::string(8, 'x')}}},
                         {integer("id", 1)}))
            .nativeNumber,
        272);
}

TEST_F(RowChangerTest, RefusesUnknownTablesAndColumns) {
    EXPECT_EQ(insertionRefusal(integer("missing", 1)).nativeNumber, 207);
    RowChange elsewhere = change(RowChange::Kind::Insert, {integer("n", 1)});
    elsewhere.table = "elsewhere";
    EXPECT_EQ(refusalOf(elsewhere).nativeNumber, 208);
}

TEST_F(RowChangerTest, ADuplicateKeyIsError2627) {
    (void)session_->execute("CREATE TABLE k (code varchar(5) PRIMARY KEY)");
    RowChange insertion = change(RowChange::Kind::Insert, {text("code", "a")});
    insertion.table = "k";
    (void)session_->apply(insertion);
    insertion.values = {text("code", "A ")};
    EXPECT_EQ(refusalOf(insertion).text,
              "Violation of PRIMARY KEY constraint 'PK_k'. Cannot insert duplicate key in object "
              "'dbo.k'.");
}

}  // namespace
}  // namespace kap::ado::embedded
