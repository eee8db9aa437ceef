#include <kaputil/engine/embedded_database.hpp>

#include <gtest/gtest.h>

#include "support/temporary_folder.hpp"

namespace kap::engine {
namespace {

class EmbeddedDatabaseTest : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.file("azienda.db");
};

DatabaseError errorOf(EmbeddedDatabase& database, std::string_view script) {
    try {
        database.run(script);
    } catch (const DatabaseError& error) {
        return error;
    }
    return {0, "nothing failed", 0, 0};
}

TEST_F(EmbeddedDatabaseTest, GivesEveryTypeWithoutRounding) {
    EmbeddedDatabase database(file_);
    const auto results = database.run(
        "SELECT CAST(1 AS bit) AS b, CAST(-5 AS bigint) AS n, CAST(0.5 AS float) AS f, "
        "CAST(-12.5 AS decimal(9,2)) AS d, CAST(922337203685477.5807 AS money) AS m, "
        "CAST('20250331 10:30:00' AS datetime) AS t, N'perché' AS s, 0x00FF AS x, NULL AS z");
    ASSERT_EQ(1U, results.size());
    const ResultSet& set = results.front();
    ASSERT_EQ(1U, set.rows.size());
    const std::vector<ResultValue> expected = {
        std::int64_t{1},        std::int64_t{-5},      0.5,      "-12.50",
        "922337203685477.5807", "2025-03-31 10:30:00", "perché", Bytes{std::string("\0\xFF", 2)},
        std::monostate{}};
    EXPECT_EQ(expected, set.rows.front());
    EXPECT_EQ("b", set.columns.front().name);
}

TEST_F(EmbeddedDatabaseTest, CountsWhatStatementsWrite) {
    EmbeddedDatabase database(file_);
    const auto results =
        database.run("CREATE TABLE T (n int) INSERT INTO T VALUES (1), (2) DELETE FROM T");
    ASSERT_EQ(2U, results.size());
    EXPECT_EQ(2, results[0].rowsWritten);
    EXPECT_TRUE(results[0].columns.empty());
    EXPECT_EQ(2, results[1].rowsWritten);
}

TEST_F(EmbeddedDatabaseTest, RaisesTheServersErrorsWithTheirLine) {
    EmbeddedDatabase database(file_);
    const DatabaseError unknown = errorOf(database, "\nSELECT * FROM Manca");
    EXPECT_EQ(208, unknown.number());
    EXPECT_STREQ("Invalid object name 'Manca'.", unknown.what());
    EXPECT_EQ(2, unknown.line());
    EXPECT_EQ(16, unknown.severity());
}

TEST_F(EmbeddedDatabaseTest, HandsOverWhatIsPrintedOnce) {
    EmbeddedDatabase database(file_);
    database.run("PRINT 'uno' PRINT 'due'");
    EXPECT_EQ((std::vector<std::string>{"uno", "due"}), database.takeMessages());
    EXPECT_TRUE(database.takeMessages().empty());
    EXPECT_EQ(8134, errorOf(database, "PRINT 'tre' SELECT 1 / 0").number());
    EXPECT_EQ(std::vector<std::string>{"tre"}, database.takeMessages());
}

TEST_F(EmbeddedDatabaseTest, KeepsWhatTheOutermostCommitKeeps) {
    EmbeddedDatabase database(file_);
    database.run("CREATE TABLE T (n int)");
    database.begin();
    database.begin();
    EXPECT_EQ(2, database.transactionDepth());
    database.run("INSERT INTO T VALUES (1)");
    database.commit();
    EmbeddedDatabase other(file_);
    EXPECT_TRUE(other.run("SELECT * FROM T").front().rows.empty());
    database.commit();
    EXPECT_EQ(1U, other.run("SELECT * FROM T").front().rows.size());
    database.begin();
    database.run("DELETE FROM T");
    database.rollback();
    EXPECT_EQ(0, database.transactionDepth());
    EXPECT_EQ(1U, other.run("SELECT * FROM T").front().rows.size());
}

TEST_F(EmbeddedDatabaseTest, TellsItsTables) {
    EmbeddedDatabase database(file_);
    database.run(
        "CREATE TABLE Righe (Riga int IDENTITY PRIMARY KEY, Importo decimal(10,2) NOT NULL) "
        "CREATE TABLE Clienti (Codice varchar(6)) CREATE TABLE #Via (n int)");
    const auto tables = database.tables();
    ASSERT_EQ(2U, tables.size());
    EXPECT_EQ("Clienti", tables[0].name);
    EXPECT_EQ("varchar(6)", tables[0].columns[0].type);
    EXPECT_TRUE(tables[0].columns[0].nullable);
    const ColumnFacts& key = tables[1].columns[0];
    EXPECT_TRUE(key.identity);
    EXPECT_EQ(1, key.keyPlace);
    EXPECT_EQ("decimal(10,2)", tables[1].columns[1].type);
    EXPECT_FALSE(tables[1].columns[1].nullable);
}

TEST_F(EmbeddedDatabaseTest, CopiesAndChecksItself) {
    EmbeddedDatabase database(file_);
    database.run("CREATE TABLE T (n int) INSERT INTO T VALUES (7)");
    const std::filesystem::path copy = folder_.file("copia d'oggi.db");
    database.backUp(copy);
    EXPECT_THROW(database.backUp(copy), DatabaseError);
    EmbeddedDatabase copied(copy, {.readOnly = true});
    copied.check();
    EXPECT_EQ(std::int64_t{7},
              std::get<std::int64_t>(copied.run("SELECT n FROM T").front().rows.front().front()));
    EXPECT_NE(0, errorOf(copied, "DELETE FROM T").number());
    EXPECT_TRUE(database.takeMessages().empty());
}

TEST_F(EmbeddedDatabaseTest, SaysWhyItCannotBeOpened) {
    try {
        const EmbeddedDatabase database(folder_.file("manca.db"), {.readOnly = true});
        ADD_FAILURE() << "opened";
    } catch (const DatabaseError& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("manca.db"));
    }
    EXPECT_FALSE(std::filesystem::exists(folder_.file("manca.db")));
}

TEST(EmbeddedDatabase, LivesInMemoryAsLongAsSomebodyHasItOpen) {
    EmbeddedDatabase one(":memory:prova");
    EmbeddedDatabase other(":memory:prova");
    one.run("CREATE TABLE T (n int)");
    EXPECT_EQ(1U, other.tables().size());
}

}  // namespace
}  // namespace kap::engine
