#include "drivers/embedded/session.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"
#include "support/database.hpp"

namespace kap::ado::embedded {
namespace {

using kap::test::TemporaryFolder;
using test::errorOf;
using test::openSession;
using test::rowsOf;

// What another program writes into the file.
void runForeign(const std::string& file, const char* sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
}

TEST(EmbeddedSession, AnswersOneResultForEachStatementThatReadsOrWritesRows) {
    const auto session = openSession(":memory:results");
    const std::vector<Result> results = session->execute(
        "CREATE TABLE t (a int); INSERT INTO t VALUES (1), (2); SELECT a FROM t; "
        "UPDATE t SET a = 3 WHERE a = 1; DELETE FROM t");
    ASSERT_EQ(results.size(), 4U);
    EXPECT_EQ(results[0].rowsAffected, 2);
    EXPECT_EQ(test::shown(results[1]), "1; 2");
    EXPECT_FALSE(results[1].rowsAffected.has_value());
    EXPECT_EQ(results[2].rowsAffected, 1);
    EXPECT_EQ(results[3].rowsAffected, 2);
}

TEST(EmbeddedSession, AnEmptyScriptAnswersNothing) {
    EXPECT_TRUE(openSession(":memory:empty")->execute("-- nothing").empty());
}

TEST(EmbeddedSession, ReadsEveryTypeInItsStorageForm) {
    const auto session = openSession(":memory:storage");
    (void)session->execute(
        "CREATE TABLE t (c_bit bit, c_tinyint tinyint, c_bigint bigint, c_decimal decimal(10,3), "
        "c_money money, c_float float, c_real real, c_datetime datetime, c_date date, "
        "c_char char(4), c_nvarchar nvarchar(10), c_varbinary varbinary(4), "
        "c_guid uniqueidentifier, c_null int)");
    (void)session->execute(
        "INSERT INTO t VALUES (1, 200, 9000000000, 12.5, 3.25, 0.5, 1.5, '20240229 12:00', "
        "'20240229', 'ab', N'perché', 0x0102, '6f9619ff-8b86-d011-b42d-00c04fc964ff', NULL)");
    EXPECT_EQ(rowsOf(*session, "SELECT * FROM t"),
              "1, 200, 9000000000, 12500, 32500, 0.5, 1.5, 45351.5, 45351.0, 'ab  ', 'perché', "
              "0x0102, '6F9619FF-8B86-D011-B42D-00C04FC964FF', Null");
}

TEST(EmbeddedSession, TextsAreComparedWithoutCaseAndTrailingBlanks) {
    const auto session = openSession(":memory:texts");
    (void)session->execute(
        "CREATE TABLE t (a varchar(10)); INSERT INTO t VALUES ('Rossi'), ('verdi'), ('Bianchi')");
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t WHERE a = 'ROSSI  '"), "'Rossi'");
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t ORDER BY a"), "'Bianchi'; 'Rossi'; 'verdi'");
}

TEST(EmbeddedSession, ErrorsCarryTheServersNumberWordsAndLine) {
    const auto session = openSession(":memory:errors");
    const ServerMessage unknown = errorOf(*session, "SELECT 1\n\nSELECT * FROM missing");
    EXPECT_EQ(unknown.nativeNumber, 208);
    EXPECT_EQ(unknown.number, errors::kUnknownObject);
    EXPECT_EQ(unknown.state, "42S02");
    EXPECT_EQ(unknown.text, "Invalid object name 'missing'.");
    EXPECT_EQ(unknown.line, 3);
    const ServerMessage syntax = errorOf(*session, "SELECT * FRM t");
    EXPECT_EQ(syntax.number, errors::kCommandText);
    EXPECT_EQ(syntax.state, "42000");
}

TEST(EmbeddedSession, AnErrorInTheTextRunsNothing) {
    const auto session = openSession(":memory:syntax");
    (void)session->execute("CREATE TABLE t (a int)");
    (void)errorOf(*session, "INSERT INTO t VALUES (1); SELECT FROM");
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "");
}

TEST(EmbeddedSession, NullIntoANotNullColumnIsError515) {
    const auto session = openSession(":memory:515");
    (void)session->execute("CREATE TABLE t (a int NOT NULL, b int)");
    const ServerMessage error = errorOf(*session, "INSERT INTO t (b) VALUES (1)");
    EXPECT_EQ(error.nativeNumber, 515);
    EXPECT_EQ(error.number, errors::kIntegrity);
    EXPECT_EQ(error.state, "23000");
    EXPECT_EQ(
        error.text,
        "Cannot insert the value NULL into column 'a', table 'memory.dbo.t'; column does not allow "
        "nulls. INSERT fails.");
    (void)session->execute("INSERT INTO t VALUES (1, 1)");
    EXPECT_EQ(
        errorOf(*session, "UPDATE t SET a = NULL").text,
        "Cannot insert the value NULL into column 'a', table 'memory.dbo.t'; column does not allow "
        "nulls. UPDATE fails.");
}

TEST(EmbeddedSession, ADuplicateKeyIsError2627) {
    const auto session = openSession(":memory:2627");
    (void)session->execute("CREATE TABLE t (a int PRIMARY KEY, b int, UNIQUE (b))");
    (void)session->execute("INSERT INTO t VALUES (1, 1)");
    const ServerMessage error = errorOf(*session, "INSERT INTO t VALUES (1, 2)");
    EXPECT_EQ(error.nativeNumber, 2627);
    EXPECT_EQ(error.number, errors::kIntegrity);
    EXPECT_EQ(error.text,
              "Violation of PRIMARY KEY constraint 'PK_t'. Cannot insert duplicate key in object "
              "'dbo.t'.");
    EXPECT_EQ(errorOf(*session, "INSERT INTO t VALUES (2, 1)").text,
              "Violation of UNIQUE KEY constraint 'UQ_t_1'. Cannot insert duplicate key in object "
              "'dbo.t'.");
}

TEST(EmbeddedSession, ADuplicateKeyNamesTheKeyThatWasGivenAName) {
    const auto session = openSession(":memory:key names");
    (void)session->execute(
        "CREATE TABLE t (a int, b int, CONSTRAINT Chiave PRIMARY KEY (a, b)); "
        "INSERT INTO t VALUES (1, 2)");
    EXPECT_EQ(errorOf(*session, "INSERT INTO t VALUES (1, 2)").text,
              "Violation of PRIMARY KEY constraint 'Chiave'. Cannot insert duplicate key in object "
              "'dbo.t'.");
}

TEST(EmbeddedSession, TooLongATextIsError8152) {
    const auto session = openSession(":memory:8152");
    (void)session->execute("CREATE TABLE t (a varchar(3))");
    const ServerMessage error = errorOf(*session, "INSERT INTO t VALUES ('abcd')");
    EXPECT_EQ(error.nativeNumber, 8152);
    EXPECT_EQ(error.number, errors::kTruncated);
    EXPECT_EQ(error.state, "22001");
}

TEST(EmbeddedSession, AScriptIsTranslatedAnewWhenAnotherConnectionChangesTheSchema) {
    const TemporaryFolder folder;
    const auto session = openSession(folder.file("a.db"));
    const auto other = openSession(folder.file("a.db"));
    (void)session->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (1)");
    EXPECT_EQ(rowsOf(*session, "SELECT * FROM t"), "1");
    EXPECT_EQ(rowsOf(*session, "SELECT * FROM t"), "1");
    (void)other->execute(
        "DROP TABLE t; CREATE TABLE t (a varchar(5), b money); INSERT INTO t VALUES ('x', 2)");
    const Result result = session->execute("SELECT * FROM t").back();
    EXPECT_EQ(test::shown(result), "'x', 20000");
    EXPECT_EQ(result.columns[0].type, DataTypeEnum::adVarChar);
    (void)other->execute("DROP TABLE t");
    EXPECT_EQ(errorOf(*session, "SELECT * FROM t").nativeNumber, 208);
    (void)other->execute("CREATE TABLE t (c bit)");
    EXPECT_EQ(rowsOf(*session, "SELECT * FROM t"), "");
}

TEST(EmbeddedSession, AWritingScriptIsTranslatedAnewToo) {
    const TemporaryFolder folder;
    const auto session = openSession(folder.file("a.db"));
    const auto other = openSession(folder.file("a.db"));
    const char* insert = "INSERT INTO t VALUES (2)";
    (void)session->execute("CREATE TABLE t (a int)");
    (void)session->execute(insert);
    (void)other->execute("DROP TABLE t; CREATE TABLE t (a money)");
    (void)session->execute(insert);
    EXPECT_EQ(rowsOf(*other, "SELECT a FROM t"), "20000");
}

TEST(EmbeddedSession, ATableCanBeMadeUsedAndDroppedInOneScriptAgainAndAgain) {
    const auto session = openSession(":memory:again");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(test::shown(session->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (4); "
                                               "SELECT a FROM t; DROP TABLE t")[1]),
                  "4");
    }
}

TEST(EmbeddedSession, MoreScriptsThanAreKeptCanBeRun) {
    const auto session = openSession(":memory:many");
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 300; ++i) {
            ASSERT_EQ(rowsOf(*session, "SELECT " + std::to_string(i)), std::to_string(i));
        }
    }
}

TEST(EmbeddedSession, TablesOfOtherProgramsCanBeRead) {
    const TemporaryFolder folder;
    runForeign(folder.file("a.db"),
               "CREATE TABLE notes (id INTEGER PRIMARY KEY, title TEXT, price DECIMAL(8,2), "
               "weight REAL, made TIMESTAMP, body BLOB, anything); "
               "INSERT INTO notes VALUES (1, 'uno', 2.5, 1.25, '2024-02-29', x'0A', 7)");
    const auto session = openSession(folder.file("a.db"));
    const Result result = session->execute("SELECT * FROM notes").back();
    EXPECT_EQ(test::shown(result), "1, 'uno', '2.5', 1.25, '2024-02-29', 0x0A, '7'");
    EXPECT_EQ(result.columns[0].type, DataTypeEnum::adBigInt);
    EXPECT_TRUE(result.columns[0].key);
    EXPECT_EQ(result.columns[1].type, DataTypeEnum::adLongVarWChar);
    EXPECT_EQ(result.columns[3].type, DataTypeEnum::adDouble);
    EXPECT_EQ(result.columns[5].type, DataTypeEnum::adLongVarBinary);
    EXPECT_FALSE(result.columns[4].rowVersion);
}

TEST(EmbeddedSession, AForeignValueThatIsNotOfItsColumnsTypeIsAnError) {
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))->execute("CREATE TABLE t (a int)");
    runForeign(folder.file("a.db"), "INSERT INTO t VALUES ('not a number')");
    const ServerMessage error = errorOf(*openSession(folder.file("a.db")), "SELECT a FROM t");
    EXPECT_EQ(error.nativeNumber, 245);
    EXPECT_EQ(error.number, errors::kDataTypeMismatch);
    EXPECT_EQ(error.text, "Conversion failed: column 'a' holds a value that is not of its type.");
}

}  // namespace
}  // namespace kap::ado::embedded
