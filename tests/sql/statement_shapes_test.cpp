#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "data/driver.hpp"
#include "drivers/driver_registry.hpp"
#include "shown_reply.hpp"

// Statements that differ in literals share what was made of the first of them. Whatever the
// literals are, a statement means what it means alone.
namespace kap::test {
namespace {

constexpr const char* kTables =
    "CREATE TABLE t (id int, n smallint, amount money, part decimal(9, 3), ratio float, "
    "made datetime, name varchar(8), place nvarchar(8), bytes varbinary(4), flag bit)";
constexpr const char* kRows =
    "INSERT INTO t VALUES (1, 1, 1.5, 0.125, 0.5, '20240131', 'uno', N'Uno', 0x01, 1), "
    "(2, -2, 25.25, 10.5, 1e3, '20240229 12:30', 'due', N'Città', 0x0102, 0), "
    "(3, 3, -3, 5, -1, '1999-12-31T23:59:59', 'it''s', NULL, NULL, NULL)";

std::unique_ptr<ado::Session> connect(const std::string& database) {
    const auto keys =
        ado::ConnectionString::parse("Provider=KapLocal;Data Source=:memory:" + database);
    return ado::driverFor(keys).open(keys);
}

// What a batch answers, all of it undone again.
std::string answer(ado::Session& session, const std::string& batch) {
    (void)shownReply(session, "BEGIN TRANSACTION");
    std::string shown = shownReply(session, batch);
    shown += shownReply(session, "SELECT * FROM t");
    (void)shownReply(session, "IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION");
    return shown;
}

std::string withLiteral(std::string form, const std::string& literal) {
    for (std::size_t at = 0; (at = form.find('$', at)) != std::string::npos; at += literal.size())
        form.replace(at, 1, literal);
    return form;
}

const std::vector<std::string> kLiterals{"1",
                                         "2",
                                         "300",
                                         "70000",
                                         "3000000000",
                                         "-1",
                                         "-70000",
                                         "1.5",
                                         "1.50000",
                                         "10.500",
                                         "123456.789",
                                         "-0.125",
                                         "1e3",
                                         "-1e0",
                                         "$25.25",
                                         "'uno'",
                                         "'it''s'",
                                         "'2'",
                                         "'20240131'",
                                         "'31/1/2024'",
                                         "'a text that is too long'",
                                         "''",
                                         "N'Uno'",
                                         "N'Città'",
                                         "0x01",
                                         "0x0102030405",
                                         "NULL",
                                         "'%u%'",
                                         "99999999999999999999"};

const std::vector<std::string> kForms{
    "SELECT * FROM t WHERE id = $",
    "SELECT * FROM t WHERE $ < n",
    "SELECT * FROM t WHERE amount >= $",
    "SELECT * FROM t WHERE part <> $ ORDER BY id",
    "SELECT * FROM t WHERE ratio = $",
    "SELECT * FROM t WHERE made > $",
    "SELECT * FROM t WHERE name = $ OR place = $",
    "SELECT * FROM t WHERE bytes = $",
    "SELECT * FROM t WHERE name LIKE $",
    "SELECT * FROM t WHERE id BETWEEN 1 AND $",
    "SELECT * FROM t WHERE amount BETWEEN $ AND 30.5",
    "SELECT * FROM t WHERE part IN (5, $)",
    "SELECT * FROM t WHERE id + 1 = $ AND id = 2",
    "SELECT * FROM t WHERE id = 2 AND n = $",
    "SELECT TOP 2 $ AS a, id FROM t WHERE id > 0 ORDER BY id",
    "SELECT CASE WHEN id = $ THEN 'a' ELSE 'b' END, COUNT(*) FROM t "
    "GROUP BY CASE WHEN id = 1 THEN 'a' ELSE 'b' END",
    "SELECT id FROM t WHERE id = 1 UNION SELECT id FROM t WHERE id = $",
    "SELECT COUNT(*) FROM t GROUP BY flag HAVING COUNT(*) > $",
    "SELECT id FROM t WHERE EXISTS (SELECT * FROM t AS u WHERE u.id = $ AND u.id = t.id)",
    "INSERT INTO t (id) VALUES ($)",
    "INSERT INTO t (n, id) VALUES ($, 9)",
    "INSERT INTO t (amount) VALUES ($)",
    "INSERT INTO t (part) VALUES ($)",
    "INSERT INTO t (ratio) VALUES ($)",
    "INSERT INTO t (made) VALUES ($)",
    "INSERT INTO t (name, place) VALUES ($, $)",
    "INSERT INTO t (bytes) VALUES ($)",
    "INSERT INTO t (flag) VALUES ($)",
    "INSERT INTO t (id, name) SELECT id, name FROM t WHERE id < $",
    "UPDATE t SET n = $ WHERE id = 2",
    "UPDATE t SET name = $, amount = amount + 1 WHERE name <> 'x'",
    "UPDATE t SET amount = amount * 2 WHERE part = $",
    "DELETE FROM t WHERE id = $",
    "DELETE FROM t WHERE id = 1 AND name = $",
};

TEST(StatementShapes, AStatementMeansWhatItMeansAloneWhateverStatementsWereBefore) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, kTables), "");
    ASSERT_EQ(shownReply(*database, kRows), "3 rows\n");
    for (const std::string& form : kForms) {
        const auto warm = connect("shapes");
        // The second of these is learned, and every other one may share it.
        for (int i = 0; i < 3; ++i)
            (void)answer(*warm, withLiteral(form, "1"));
        for (const std::string& literal : kLiterals) {
            const std::string statement = withLiteral(form, literal);
            const auto fresh = connect("shapes");
            EXPECT_EQ(answer(*warm, statement), answer(*fresh, statement)) << statement;
        }
    }
}

TEST(StatementShapes, EveryLiteralMayBeTheOneThatIsLearned) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, kTables), "");
    ASSERT_EQ(shownReply(*database, kRows), "3 rows\n");
    for (const std::string& form : {kForms[2], kForms[6], kForms[25]}) {
        std::vector<std::string> alone;
        for (const std::string& literal : kLiterals)
            alone.push_back(answer(*connect("shapes"), withLiteral(form, literal)));
        for (const std::string& learned : kLiterals) {
            const auto warm = connect("shapes");
            (void)answer(*warm, withLiteral(form, learned));
            (void)answer(*warm, withLiteral(form, learned));
            for (std::size_t i = 0; i < kLiterals.size(); ++i) {
                const std::string statement = withLiteral(form, kLiterals[i]);
                EXPECT_EQ(answer(*warm, statement), alone[i]) << statement << " after " << learned;
            }
        }
    }
}

TEST(StatementShapes, TheStatementsOfOneBatchMayShareOne) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, kTables), "");
    std::string batch;
    for (int i = 0; i < 100; ++i) {
        const std::string n = std::to_string(i);
        batch +=
            "INSERT INTO t (id, name, amount) VALUES (" + n + ", 'n" + n + "', " + n + ".25)\n";
    }
    batch +=
        "SELECT COUNT(*), SUM(id), SUM(amount), COUNT(DISTINCT name) FROM t WHERE id >= 10 "
        "UNION ALL SELECT COUNT(*), SUM(id), SUM(amount), 0 FROM t WHERE id >= 90";
    const std::string shown = answer(*database, batch);
    EXPECT_NE(shown.find("90 | 4905 | 4927.5000 | 90\n10 | 945 | 947.5000 | 0\n"),
              std::string::npos)
        << shown;
}

TEST(StatementShapes, AStatementThatGoesOnIsAnotherOne) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, kTables), "");
    ASSERT_EQ(shownReply(*database, kRows), "3 rows\n");
    for (const char* id : {"1", "2", "3", "1"})
        (void)answer(*database, std::string("SELECT n FROM t WHERE id = ") + id);
    for (const char* rest : {"",
                             ";",
                             " + 1",
                             " * 2 - 1",
                             " UNION SELECT 7",
                             " ORDER BY n",
                             " AND n = 1",
                             " OR id = 3",
                             " GROUP BY n",
                             " OPTION (MAXDOP 1)",
                             " SELECT id FROM t",
                             " IF 1 = 1 SELECT 2",
                             " DECLARE @a int SET @a = 3 SELECT @a",
                             " -- 5",
                             " /* 6 */",
                             ".5",
                             " BEGIN SELECT 1 END",
                             " PRINT 'x'",
                             " RETURN SELECT 3",
                             " FOR BROWSE",
                             " EXCEPT SELECT 1",
                             " )",
                             " x"}) {
        for (const char* id : {"1", "2", "0"}) {
            const std::string statement = std::string("SELECT n FROM t WHERE id = ") + id + rest;
            EXPECT_EQ(answer(*database, statement), answer(*connect("shapes"), statement))
                << statement;
        }
    }
}

// The scripts that programs build hold variables, labels and tests between their statements.
TEST(StatementShapes, StandAmongVariables) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, kTables), "");
    ASSERT_EQ(shownReply(*database, kRows), "3 rows\n");
    const auto script = [](const std::string& variables, const std::string& added) {
        return variables + " SET NOCOUNT ON SET @a = 5 UPDATE t SET n = n + @a WHERE id = 1 " +
               "UPDATE t SET n = 11" + added +
               " WHERE id = 1 SET @a = @@ROWCOUNT IF @a <> 1 GOTO bad " + "UPDATE t SET n = 12" +
               added + " WHERE id = 2 IF @@ERROR <> 0 GOTO bad " + "UPDATE t SET n = 13" + added +
               " WHERE id = 3 SELECT @a RETURN bad: PRINT 'bad'";
    };
    for (int i = 0; i < 3; ++i) {
        for (const char* variables : {"DECLARE @a int", "DECLARE @x int, @y int, @a int"}) {
            const std::string batch = script(variables, std::to_string(i));
            const std::string shown = answer(*database, batch);
            EXPECT_EQ(shown, answer(*connect("shapes"), batch));
            EXPECT_NE(shown.find("13" + std::to_string(i)), std::string::npos) << shown;
        }
    }
}

TEST(StatementShapes, AnErrorInOneOfManyIsToldWithItsLine) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, kTables), "");
    const std::string shown = answer(*database,
                                     "INSERT INTO t (id, name) VALUES (1, 'a')\n"
                                     "INSERT INTO t (id, name) VALUES (2, 'b')\n"
                                     "INSERT INTO t (id, name) VALUES (3, 'c')\n"
                                     "INSERT INTO t (id, name) VALUES (4, 'longer than eight')\n"
                                     "INSERT INTO t (id, name) VALUES (5, 'e')\n");
    EXPECT_NE(shown.find("8152 at 4"), std::string::npos) << shown;
    EXPECT_NE(shown.find("5 | "), std::string::npos) << shown;
}

TEST(StatementShapes, AChangedTableIsSeen) {
    const auto one = connect("shapes");
    const auto other = connect("shapes");
    ASSERT_EQ(shownReply(*one, "CREATE TABLE t (id int, name varchar(4))"), "");
    for (const char* name : {"'a'", "'b'", "'c'"}) {
        EXPECT_EQ(shownReply(*one, std::string("INSERT INTO t VALUES (1, ") + name + ")"),
                  "1 rows\n");
    }
    EXPECT_EQ(shownReply(*other, "ALTER TABLE t ALTER COLUMN name varchar(2)"), "");
    EXPECT_NE(shownReply(*one, "INSERT INTO t VALUES (1, 'abc')").find("8152"), std::string::npos);
    EXPECT_EQ(shownReply(*one, "INSERT INTO t VALUES (7, 'ab')"), "1 rows\n");
    EXPECT_NE(shownReply(*other, "DROP TABLE t; CREATE TABLE t (name varchar(9), id int)"), "x");
    EXPECT_NE(shownReply(*one, "INSERT INTO t VALUES (8, 'ab')").find("245"), std::string::npos);
    EXPECT_EQ(shownReply(*one, "INSERT INTO t VALUES ('ab', 8)"), "1 rows\n");
}

// The texts of views, checks, defaults and functions have literals of their own.
TEST(StatementShapes, LiteralsOfWhatAStatementNamesAreNotItsOwn) {
    const auto database = connect("shapes");
    for (const char* batch :
         {"CREATE TABLE t (id int DEFAULT 7, n int CHECK (n <> 100), twice AS n * 2)",
          "CREATE VIEW few AS SELECT id, n FROM t WHERE n <> 5 AND n > 1 WITH CHECK OPTION",
          "CREATE FUNCTION plus(@a int) RETURNS int AS BEGIN RETURN @a + 2 END"}) {
        ASSERT_EQ(shownReply(*database, batch), "");
    }
    for (const char* n : {"2", "3", "4", "5", "6", "100", "7"}) {
        const std::string number = n;
        const bool taken = number != "5" && number != "100";
        EXPECT_EQ(
            shownReply(*database, "INSERT INTO few (n) VALUES (" + number + ")") == "1 rows\n",
            taken)
            << n;
        const std::string shown = shownReply(
            *database, "SELECT id, n, dbo.plus(n) FROM few WHERE n = " + number + " AND id = 7");
        EXPECT_EQ(shown.find("7 | " + number + " | ") != std::string::npos, taken) << shown;
    }
}

TEST(StatementShapes, KeysThatPassEachOtherAreUpdatedWithTheStatementsOwnLiterals) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, "CREATE TABLE k (id int PRIMARY KEY, g int)"), "");
    ASSERT_EQ(shownReply(*database, "INSERT INTO k VALUES (1, 1), (2, 1), (3, 2), (4, 2)"),
              "4 rows\n");
    for (const char* group : {"1", "7", "8", "2"}) {
        (void)shownReply(*database, std::string("UPDATE k SET id = id + 1 WHERE g >= ") + group);
    }
    const std::string shown = shownReply(*database, "SELECT id, g FROM k ORDER BY id");
    EXPECT_NE(shown.find("2 | 1\n3 | 1\n5 | 2\n6 | 2\n"), std::string::npos) << shown;
}

TEST(StatementShapes, MessagesTellTheLineOfTheStatementAndNotOfTheFirstOne) {
    const auto database = connect("shapes");
    ASSERT_EQ(shownReply(*database, "CREATE TABLE once (n int, t varchar(4))"), "");
    ASSERT_EQ(
        shownReply(*database, "CREATE UNIQUE INDEX ix_once ON once (n) WITH (IGNORE_DUP_KEY = ON)"),
        "");
    ASSERT_EQ(shownReply(*database, "INSERT INTO once (n, t) VALUES (1, 'a')"), "1 rows\n");
    std::string batch;
    for (int i = 0; i < 4; ++i)
        batch += "INSERT INTO once (n, t) VALUES (1, 'b" + std::to_string(i) + "')\n";
    const std::string shown = shownReply(*database, batch);
    for (int line = 1; line <= 4; ++line) {
        EXPECT_NE(shown.find("3604 at " + std::to_string(line) + ":"), std::string::npos) << shown;
    }
}

}  // namespace
}  // namespace kap::test
