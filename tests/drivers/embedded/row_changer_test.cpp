#include "drivers/embedded/row_changer.hpp"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado::embedded {
namespace {

using enum DataTypeEnum;
using test::errorOf;
using test::openSession;
using test::rowsOf;

// A column, the type of the value that is given for it, and the value.
struct Cell {
    std::string column;
    DataTypeEnum type = adEmpty;
    std::uint8_t scale = 255;
    Value value;
};

Cell integer(const char* column, std::int64_t value) {
    return {column, adInteger, 255, value};
}
Cell text(const char* column, const char* value) {
    return {column, adVarChar, 255, std::string(value)};
}
Cell null(const char* column) {
    return {column, adVarChar, 255, std::monostate{}};
}

// A change of one row with a plan of its own.
struct Change {
    RowPlan::Kind kind;
    std::vector<Cell> values;
    std::vector<Cell> criteria;
    std::vector<std::string> readBack;
    std::string table = "t";

    operator RowChange() const {  // NOLINT(google-explicit-constructor): it is one
        RowPlan::Columns columns;
        RowChange made;
        for (const Cell& cell : values) {
            columns.values.push_back({cell.column, cell.type, cell.scale});
            made.values.push_back(cell.value);
        }
        for (const Cell& cell : criteria) {
            columns.criteria.push_back({cell.column, cell.type, cell.scale});
            made.criteria.push_back(cell.value);
        }
        for (const std::string& name : readBack) {
            columns.readBack.push_back({name});
        }
        made.plan = std::make_shared<const RowPlan>(kind, table, std::move(columns));
        return made;
    }
};

Change change(RowPlan::Kind kind, std::vector<Cell> values, std::vector<Cell> criteria = {},
              std::vector<std::string> readBack = {}) {
    return {kind, std::move(values), std::move(criteria), std::move(readBack)};
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
    ServerMessage insertionRefusal(Cell value) {
        return refusalOf(change(RowPlan::Kind::Insert, {std::move(value)}));
    }

    std::unique_ptr<Session> session_ = openSession(":memory:row changer");
};

TEST_F(RowChangerTest, InsertsARowAndReadsBackWhatTheDatabaseSet) {
    const ChangeOutcome outcome = session_->apply(
        change(RowPlan::Kind::Insert, {text("name", "tre")}, {}, {"id", "n", "v", "name"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    ASSERT_EQ(outcome.readBack.size(), 4U);
    EXPECT_EQ(test::shown(outcome.readBack[0]), "3");
    EXPECT_EQ(test::shown(outcome.readBack[1]), "7");
    EXPECT_EQ(test::shown(outcome.readBack[2]), "0x00000000000007D3");
    EXPECT_EQ(test::shown(outcome.readBack[3]), "'tre'");
}

TEST_F(RowChangerTest, InsertsARowOfDefaults) {
    EXPECT_EQ(session_->apply(change(RowPlan::Kind::Insert, {})).rowsTouched, 1);
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
    Change insertion = change(RowPlan::Kind::Insert, {}, {}, {"n", "d", "p", "l"});
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
    Change insertion = change(RowPlan::Kind::Insert, {}, {}, {"a"});
    insertion.table = "one";
    EXPECT_EQ(test::shown(session_->apply(insertion).readBack.at(0)), "4");
}

TEST_F(RowChangerTest, ATriggerThatCatchesAnErrorUndoesTheRowAndTheTransaction) {
    (void)session_->execute(
        "CREATE TRIGGER tr ON t FOR INSERT AS BEGIN TRY SELECT 1/0 END TRY BEGIN CATCH PRINT 'x' "
        "END CATCH");
    const Change insertion = change(RowPlan::Kind::Insert, {text("name", "tre")});
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
    const Change insertion = change(RowPlan::Kind::Insert, {text("note", "ok")});
    EXPECT_EQ(session_->apply(insertion).rowsTouched, 1);
}

TEST_F(RowChangerTest, AStatementMadeBeforeTheTableChangedIsMadeAnew) {
    const RowChange update =
        change(RowPlan::Kind::Update, {integer("n", 8)}, {integer("id", 1)}, {"name", "n"});
    EXPECT_EQ(session_->apply(update).rowsTouched, 1);
    (void)openSession(":memory:row changer")->execute("ALTER TABLE t DROP COLUMN made");
    const ChangeOutcome outcome = session_->apply(update);
    EXPECT_EQ(test::shown(outcome.readBack.at(0)), "'uno'");
    EXPECT_EQ(test::shown(outcome.readBack.at(1)), "8");
    (void)session_->execute("ALTER TABLE t DROP COLUMN name");
    EXPECT_EQ(refusalOf(update).nativeNumber, 207);
}

TEST_F(RowChangerTest, ReadsBackAComputedColumnAndARowWhoseKeyWasWritten) {
    (void)session_->execute(
        "CREATE TABLE c (k varchar(5) PRIMARY KEY, n int, d AS n * 2); INSERT c VALUES ('a', 1)");
    Change update = change(RowPlan::Kind::Update, {text("k", "b"), integer("n", 21)},
                           {text("k", "a")}, {"k", "n", "d"});
    update.table = "c";
    const ChangeOutcome outcome = session_->apply(update);
    ASSERT_EQ(outcome.readBack.size(), 3U);
    EXPECT_EQ(test::shown(outcome.readBack[0]), "'b'");
    EXPECT_EQ(test::shown(outcome.readBack[2]), "42");
}

TEST_F(RowChangerTest, ConnectionsThatTakeTurnsGoOnWithEachOthersNumbers) {
    const auto other = openSession(":memory:row changer");
    const RowChange insertion = change(RowPlan::Kind::Insert, {text("name", "x")}, {}, {"id", "v"});
    std::string numbers;
    for (Session* writer : {session_.get(), session_.get(), other.get(), session_.get()}) {
        const ChangeOutcome outcome = writer->apply(insertion);
        numbers +=
            test::shown(outcome.readBack.at(0)) + " " + test::shown(outcome.readBack.at(1)) + "; ";
    }
    EXPECT_EQ(numbers,
              "3 0x00000000000007D3; 4 0x00000000000007D4; 5 0x00000000000007D5; "
              "6 0x00000000000007D6; ");
}

// Files that other programs have made may have such tables.
TEST_F(RowChangerTest, ReadsBackRowsThatHaveNoNumbers) {
    sqlite3* bare = nullptr;
    kap::test::TemporaryFolder folder;
    const std::string file = folder.file("plain.db");
    ASSERT_EQ(sqlite3_open(file.c_str(), &bare), SQLITE_OK);
    sqlite3_exec(bare,
                 "CREATE TABLE t (k TEXT PRIMARY KEY, n INTEGER DEFAULT 5) WITHOUT ROWID; "
                 "INSERT INTO t VALUES ('a', 1)",
                 nullptr, nullptr, nullptr);
    sqlite3_close(bare);
    session_ = openSession(file);
    ChangeOutcome outcome = session_->apply(
        change(RowPlan::Kind::Update, {integer("n", 2)}, {text("k", "a")}, {"k", "n"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    EXPECT_EQ(test::shown(outcome.readBack.at(1)), "2");
    outcome = session_->apply(change(RowPlan::Kind::Insert, {text("k", "b")}, {}, {"k", "n"}));
    EXPECT_EQ(test::shown(outcome.readBack.at(1)), "5");
}

TEST_F(RowChangerTest, ReadsAWholeNumberOfAFloatBackAsAFloat) {
    const ChangeOutcome outcome = session_->apply(
        change(RowPlan::Kind::Update, {integer("mark", 42)}, {integer("id", 2)}, {"mark"}));
    EXPECT_EQ(outcome.readBack.at(0), Value(42.0));
}

TEST_F(RowChangerTest, UpdatesTheRowThatTheCriteriaDescribe) {
    const ChangeOutcome outcome =
        session_->apply(change(RowPlan::Kind::Update, {text("name", "dos")},
                               {integer("id", 2), text("name", "due")}, {"v"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    EXPECT_EQ(test::shown(outcome.readBack.at(0)), "0x00000000000007D3");
    EXPECT_EQ(rowsOf(*session_, "SELECT id, name FROM t ORDER BY id"), "1, 'uno'; 2, 'dos'");
}

TEST_F(RowChangerTest, TouchesNothingWhenTheRowIsNotAsItWas) {
    EXPECT_EQ(session_
                  ->apply(change(RowPlan::Kind::Update, {text("name", "dos")},
                                 {integer("id", 2), text("name", "tre")}))
                  .rowsTouched,
              0);
    EXPECT_EQ(rowsOf(*session_, "SELECT name FROM t WHERE id = 2"), "'due'");
}

TEST_F(RowChangerTest, CriteriaCompareTextExactly) {
    for (const char* other : {"UNO", "uno ", "unò"}) {
        EXPECT_EQ(
            session_->apply(change(RowPlan::Kind::Update, {integer("n", 5)}, {text("name", other)}))
                .rowsTouched,
            0)
            << other;
    }
    EXPECT_EQ(
        session_->apply(change(RowPlan::Kind::Update, {integer("n", 5)}, {text("name", "uno")}))
            .rowsTouched,
        1);
}

TEST_F(RowChangerTest, InCriteriaNullEqualsNull) {
    (void)session_->execute("UPDATE t SET name = NULL WHERE id = 1");
    EXPECT_EQ(session_->apply(change(RowPlan::Kind::Update, {integer("n", 5)}, {null("name")}))
                  .rowsTouched,
              1);
    EXPECT_EQ(rowsOf(*session_, "SELECT n FROM t ORDER BY id"), "5; 2");
}

TEST_F(RowChangerTest, TheRowVersionCanBeACriterion) {
    const std::string version("\0\0\0\0\0\0\x07\xD1", 8);
    const RowChange update = change(RowPlan::Kind::Update, {integer("n", 5)},
                                    {integer("id", 1), {"v", adBinary, 255, Blob{version}}});
    EXPECT_EQ(session_->apply(update).rowsTouched, 1);
    EXPECT_EQ(session_->apply(update).rowsTouched, 0);
}

TEST_F(RowChangerTest, DeletesTheRowThatTheCriteriaDescribe) {
    EXPECT_EQ(session_->apply(change(RowPlan::Kind::Delete, {}, {integer("id", 1)})).rowsTouched,
              1);
    EXPECT_EQ(rowsOf(*session_, "SELECT id FROM t"), "2");
}

TEST_F(RowChangerTest, ReadsARowAgainWithoutWriting) {
    const ChangeOutcome outcome =
        session_->apply(change(RowPlan::Kind::Read, {}, {integer("id", 2)}, {"name", "n", "v"}));
    EXPECT_EQ(outcome.rowsTouched, 1);
    EXPECT_EQ(test::shown(outcome.readBack.at(0)), "'due'");
    EXPECT_EQ(test::shown(outcome.readBack.at(1)), "2");
    EXPECT_EQ(test::shown(outcome.readBack.at(2)), "0x00000000000007D2");
}

TEST_F(RowChangerTest, ReadingARowThatIsGoneTouchesNothing) {
    const ChangeOutcome outcome =
        session_->apply(change(RowPlan::Kind::Read, {}, {integer("id", 9)}, {"name"}));
    EXPECT_EQ(outcome.rowsTouched, 0);
    EXPECT_TRUE(outcome.readBack.empty());
}

TEST_F(RowChangerTest, CriteriaThatFitSeveralRowsWriteNothing) {
    (void)session_->execute("UPDATE t SET n = 3");
    for (const auto kind : {RowPlan::Kind::Update, RowPlan::Kind::Delete}) {
        std::vector<Cell> values;
        if (kind == RowPlan::Kind::Update) {
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
    (void)session_->apply(change(RowPlan::Kind::Insert, {text("name", "tre")}));
    (void)session_->execute("UPDATE t SET n = 3");
    (void)refusalOf(change(RowPlan::Kind::Delete, {}, {integer("n", 3)}));
    EXPECT_EQ(session_->transactionDepth(), 1);
    session_->commit();
    EXPECT_EQ(rowsOf(*session_, "SELECT name FROM t ORDER BY id"), "'uno'; 'due'; 'tre'");
}

TEST_F(RowChangerTest, ARolledBackTransactionTakesItsChangesBack) {
    session_->begin();
    (void)session_->apply(change(RowPlan::Kind::Delete, {}, {integer("id", 1)}));
    session_->rollback();
    EXPECT_EQ(rowsOf(*session_, "SELECT id FROM t ORDER BY id"), "1; 2");
}

TEST_F(RowChangerTest, ValuesAreBroughtToTheColumnsType) {
    (void)session_->apply(
        change(RowPlan::Kind::Insert,
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
        refusalOf(change(RowPlan::Kind::Update, {null("n")}, {integer("id", 1)})).text,
        "Cannot insert the value NULL into column 'n', table 'memory.dbo.t'; column does not allow "
        "nulls. UPDATE fails.");
}

TEST_F(RowChangerTest, RefusesWhatTheDatabaseSetsItself) {
    EXPECT_EQ(insertionRefusal(integer("id", 9)).nativeNumber, 544);
    EXPECT_EQ(insertionRefusal({"v", adBinary, 255, Blob{std::string(8, 'x')}}).nativeNumber, 273);
    EXPECT_EQ(refusalOf(change(RowPlan::Kind::Update, {integer("id", 9)}, {integer("id", 1)}))
                  .nativeNumber,
              8102);
    EXPECT_EQ(
        refusalOf(change(RowPlan::Kind::Update, {{"v", adBinary, 255, Blob{std::string(8, 'x')}}},
                         {integer("id", 1)}))
            .nativeNumber,
        272);
}

TEST_F(RowChangerTest, RefusesUnknownTablesAndColumns) {
    EXPECT_EQ(insertionRefusal(integer("missing", 1)).nativeNumber, 207);
    Change elsewhere = change(RowPlan::Kind::Insert, {integer("n", 1)});
    elsewhere.table = "elsewhere";
    EXPECT_EQ(refusalOf(elsewhere).nativeNumber, 208);
}

TEST_F(RowChangerTest, ADuplicateKeyIsError2627) {
    (void)session_->execute("CREATE TABLE k (code varchar(5) PRIMARY KEY)");
    Change insertion = change(RowPlan::Kind::Insert, {text("code", "a")});
    insertion.table = "k";
    (void)session_->apply(insertion);
    insertion.values = {text("code", "A ")};
    EXPECT_EQ(refusalOf(insertion).text,
              "Violation of PRIMARY KEY constraint 'PK_k'. Cannot insert duplicate key in object "
              "'dbo.k'.");
}

}  // namespace
}  // namespace kap::ado::embedded
