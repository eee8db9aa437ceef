// What recordsets write through servers and drivers that do not agree on counts.
#include <gtest/gtest.h>

#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "replay.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

const std::string kTable = R"(
facts t
fact id int key 1
fact nome nvarchar(20)
> SELECT * FROM t
columns id int, nome nvarchar(20)
row 1 | Rossi
)";

const std::string kTriggers = R"(
facts t triggers
fact id int key 1
fact nome nvarchar(20)
> SELECT * FROM t
columns id int, nome nvarchar(20)
row 1 | Rossi
)";

TEST(ReplayedWriting, TakesTheRowFromTheStatementThatWritesIt) {
    test::Replay replay(kTable + R"(
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
row NERI
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Update(u"nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String NERI");
}

TEST(ReplayedWriting, ARowThatDoesNotComeBackHasBeenChangedByOthers) {
    test::Replay replay(kTable + R"(
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
columns nome nvarchar(20)
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    EXPECT_EQ(raisedBy([&] { rows->Update(u"nome", u"Neri"); }), errors::kConcurrency);
    rows->CancelUpdate();
}

TEST(ReplayedWriting, WritesARowOfATableWithTriggersAndReadsItInOneTransaction) {
    // The triggers' counts and rows come first.
    test::Replay replay(kTriggers + R"(
> BEGIN TRANSACTION; UPDATE "t" SET "nome" = ? WHERE "id" = ? AND "nome" = ?; SELECT @@ROWCOUNT;
  SELECT "nome" FROM "t" WHERE "id" = ?; COMMIT TRANSACTION
? nvarchar Neri
? int 1
? nvarchar Rossi
? int 1
count 7
columns nome nvarchar(20)
row of the trigger
row of another one
count 3
columns n int
row 1
columns nome nvarchar(20)
row neri
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Update(u"nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String neri");
}

TEST(ReplayedWriting, LearnsFromARefusalThatATableHasTriggers) {
    test::Replay replay(kTable + R"(
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
error 42000 334 [FreeTDS][SQL Server]The target table 't' cannot have any enabled triggers
> BEGIN TRANSACTION; UPDATE "t" SET "nome" = ? WHERE "id" = ? AND "nome" = ?; SELECT @@ROWCOUNT;
  SELECT "nome" FROM "t" WHERE "id" = ?; COMMIT TRANSACTION
? nvarchar Neri
? int 1
? nvarchar Rossi
? int 1
columns n int
row 1
columns nome nvarchar(20)
row Neri
> BEGIN TRANSACTION; DELETE FROM "t" WHERE "id" = ?; SELECT @@ROWCOUNT; COMMIT TRANSACTION
? int 1
count 2
columns n int
row 1
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Update(u"nome", u"Neri");
    rows->Delete();
}

TEST(ReplayedWriting, UndoesWhatATextOfSeveralStatementsHasLeftOpen) {
    test::Replay replay(kTriggers + R"(
> BEGIN TRANSACTION; UPDATE "t" SET "nome" = ? WHERE "id" = ? AND "nome" = ?; SELECT @@ROWCOUNT;
  SELECT "nome" FROM "t" WHERE "id" = ?; COMMIT TRANSACTION
? nvarchar Neri
? int 1
? nvarchar Rossi
? int 1
error 22018 245 [FreeTDS][SQL Server]Conversion failed in the trigger
> IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION
count -1
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    EXPECT_EQ(raisedBy([&] { rows->Update(u"nome", u"Neri"); }), errors::kDataTypeMismatch);
    rows->CancelUpdate();
}

TEST(ReplayedWriting, LeavesTheClientsTransactionToTheClient) {
    test::Replay replay(kTriggers + R"(
> !autocommit off
> UPDATE "t" SET "nome" = ? WHERE "id" = ? AND "nome" = ?; SELECT @@ROWCOUNT;
  SELECT "nome" FROM "t" WHERE "id" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
? int 1
error 42000 50000 [FreeTDS][SQL Server]no
> !rollback
> !autocommit on
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    connection->BeginTrans();
    EXPECT_EQ(raisedBy([&] { rows->Update(u"nome", u"Neri"); }), errors::kCommandText);
    rows->CancelUpdate();
    connection->RollbackTrans();
}

TEST(ReplayedWriting, UndoesAChangeOfTwinsOfATableWithoutKey) {
    test::Replay replay(R"(
facts t
fact id int
fact nome nvarchar(20)
> SELECT * FROM t
columns id int, nome nvarchar(20)
row 1 | Rossi
> !autocommit off
> DELETE FROM "t" OUTPUT 1 WHERE "id" = ? AND "nome" = ?
? int 1
? nvarchar Rossi
columns n int
row 1
row 1
> !rollback
> !autocommit on
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    EXPECT_EQ(raisedBy([&] { rows->Delete(); }), errors::kUnspecified);
}

TEST(ReplayedWriting, ReadsAnIdentityThatTheDriverDoesNotTellOf) {
    test::Replay replay(R"(
facts t
fact id int key 1 identity
fact nome nvarchar(20)
fact lungo int generated
> SELECT * FROM t
columns id int, nome nvarchar(20), lungo int
> INSERT INTO "t" ("nome") OUTPUT inserted."id", inserted."nome", inserted."lungo" VALUES (?)
? nvarchar Neri
columns id int, nome nvarchar(20), lungo int
row 17 | Neri | 4
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->AddNew();
    rows->Fields()->Item(u"nome")->setValue(u"Neri");
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"id")), "Long 17");
    EXPECT_EQ(shown(fieldOf(rows, u"lungo")), "Long 4");
    EXPECT_NE(raisedBy([&] { rows->Fields()->Item(u"lungo")->setValue(5); }), 0);
}

TEST(ReplayedWriting, InsertsNothingButDefaults) {
    test::Replay replay(R"(
facts t
fact id int key 1 identity
> SELECT * FROM t
columns id int
> BEGIN TRANSACTION; INSERT INTO "t" DEFAULT VALUES; SELECT @@ROWCOUNT;
  SELECT "id" FROM "t" WHERE "id" = SCOPE_IDENTITY(); COMMIT TRANSACTION
count 1
columns n int
row 1
columns id int
row 5
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->AddNew();
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"id")), "Long 5");
}

// The trigger writes rows of its own, which have identities, counts and answers.
TEST(ReplayedWriting, InsertsIntoATableWhoseTriggersInsertElsewhere) {
    test::Replay replay(R"(
facts t triggers
fact id int key 1 identity
fact nome nvarchar(20)
> SELECT * FROM t
columns id int, nome nvarchar(20)
> BEGIN TRANSACTION; INSERT INTO "t" ("nome") VALUES (?); SELECT @@ROWCOUNT;
  SELECT "id", "nome" FROM "t" WHERE "id" = SCOPE_IDENTITY(); COMMIT TRANSACTION
? nvarchar Neri
count 5
columns id int, nome nvarchar(20)
row 900 | registro
count 1
columns n int
row 1
columns id int, nome nvarchar(20)
row 17 | NERI
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->AddNew();
    rows->Fields()->Item(u"nome")->setValue(u"Neri");
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"id")), "Long 17");
    EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String NERI");
}

// Texts of the older types are neither compared nor given back as they are.
TEST(ReplayedWriting, FindsAndReadsTextsWithoutALimit) {
    test::Replay replay(R"(
facts t
fact nota text
fact foto image
> SELECT * FROM t
columns nota text, foto varbinary(8)
row lunga | 0102
> !autocommit off
> UPDATE "t" SET "nota" = ? WHERE CAST("nota" AS varchar(max)) = ? AND
  CAST("foto" AS varbinary(max)) = ? AND CAST("nota" AS varchar(max)) = ?; SELECT @@ROWCOUNT
? nvarchar breve
? nvarchar lunga
? varbinary 0102
? nvarchar lunga
columns n int
row 1
> !commit
> !autocommit on
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Update(u"nota", u"breve");
    EXPECT_EQ(shown(fieldOf(rows, u"nota")), "String breve");
}

// Every moment of a second that a datetime can hold, in a key.
TEST(ReplayedWriting, FindsEachRowOfATableOfOddMilliseconds) {
    constexpr int kTicks = 300;
    std::string rows;
    std::string updates;
    for (int tick = 0; tick < kTicks; ++tick) {
        const std::string digits = std::to_string(1000 + (tick * 10 + 1) / 3).substr(1);
        const std::string moment = "2025-03-31 10:00:00." + digits;
        rows += "row " + moment + " | 0\n";
        updates +=
            "> UPDATE \"t\" SET \"n\" = ? OUTPUT inserted.\"n\" WHERE \"quando\" = CAST(? AS "
            "datetime) AND \"n\" = ?\n? int 1\n? datetime " +
            moment + "000\n? int 0\ncolumns n int\nrow 1\n";
    }
    test::Replay replay(
        "facts t\nfact quando datetime key 1\nfact n int\n> SELECT * FROM t\ncolumns "
        "quando datetime(3), n int\n" +
        rows + updates);
    const auto connection = replay.open();
    const auto records = test::openLive(connection, u"SELECT * FROM t");
    for (; !records->Eof(); records->MoveNext()) {
        records->Update(u"n", 1);
    }
}

TEST(ReplayedWriting, ComparesTimesAsTheirColumnsKeepThem) {
    test::Replay replay(R"(
facts t
fact a datetime
fact b smalldatetime
fact c datetime2(7)
fact d datetime2(3)
fact v timestamp
> SELECT * FROM t
columns a datetime(3), b datetime(0), c datetime(7), d datetime(3), v timestamp(8)
row 2003-12-31 18:30:15.003 | 2004-01-01 08:30:00 | 2004-01-01 00:00:00.1234567
  | 2004-01-01 00:00:00.123 | 00000000000007D1
> !autocommit off
> DELETE FROM "t" OUTPUT 1 WHERE "a" = CAST(? AS datetime) AND "b" = CAST(? AS smalldatetime) AND
  "c" BETWEEN DATEADD(microsecond, -1, CAST(? AS datetime2(7))) AND DATEADD(microsecond, 1,
  CAST(? AS datetime2(7))) AND "d" = ? AND "v" = ?
? datetime 2003-12-31 18:30:15.003000
? datetime 2004-01-01 08:30:00.000000
? datetime 2004-01-01 00:00:00.123457
? datetime 2004-01-01 00:00:00.123457
? datetime 2004-01-01 00:00:00.123000
? varbinary 00000000000007D1
columns n int
row 1
> !commit
> !autocommit on
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Delete();
}

TEST(ReplayedWriting, CountsInATransactionWhereNothingElseTells) {
    test::Replay replay(R"(
server Another Server
> !columns t
columns a varchar, b varchar, c varchar, d varchar, e int, f varchar, g int, h int, i int, j int, k int,
  l varchar, m varchar
row NULL | NULL | t | id | 4 | int | 10 | 4 | 0 | 10 | 0 | NULL | NULL
row NULL | NULL | t | nome | 12 | varchar | 20 | 20 | 0 | 10 | 1 | NULL | NULL
row NULL | NULL | txt | other | 12 | varchar | 20 | 20 | 0 | 10 | 1 | NULL | NULL
> !keys t
columns a varchar, b varchar, c varchar, d varchar
row NULL | NULL | t | id
> SELECT * FROM t
columns id int, nome varchar(20)
row 1 | Rossi
> !autocommit off
> UPDATE "t" SET "nome" = ? WHERE "id" = ? AND "nome" = ?
? nvarchar Neri
? int 1
? nvarchar Rossi
count 1
> SELECT "nome" FROM "t" WHERE "id" = ?
? int 1
columns nome varchar(20)
row NERI
> !commit
> !autocommit on
)");
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    rows->Update(u"nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String NERI");
}

TEST(ReplayedWriting, PreparesWhatIsRunASecondTime) {
    const std::string update = R"(
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar b
? int 1
? nvarchar a
columns nome nvarchar(20)
row b
> UPDATE "t" SET "nome" = ? OUTPUT inserted."nome" WHERE "id" = ? AND "nome" = ?
? nvarchar a
? int 1
? nvarchar b
columns nome nvarchar(20)
row a
)";
    test::Replay replay(R"(
facts t
fact id int key 1
fact nome nvarchar(20)
> SELECT * FROM t
columns id int, nome nvarchar(20)
row 1 | a
)" + update + update);
    const auto connection = replay.open();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    for (const char16_t* name : {u"b", u"a", u"b", u"a"}) {
        rows->Update(u"nome", name);
        EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String " + String(name).utf8());
    }
}

}  // namespace
}  // namespace kap::ado
