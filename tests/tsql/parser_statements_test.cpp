#include <gtest/gtest.h>

#include "tree_text.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

using testing::parsed;

TEST(ParserQueries, ReadsASelectWithEveryClause) {
    EXPECT_EQ(parsed("SELECT DISTINCT TOP 5 a, b AS x FROM t WHERE a > 1 GROUP BY a, b HAVING "
                     "COUNT(*) > 1 ORDER BY a DESC, 2 ASC"),
              "(order (select distinct (top 5) a (as b x) (from t) (where (> a 1)) (group a b) "
              "(having (> (COUNT *) 1))) (desc a) 2)");
}

TEST(ParserQueries, ReadsEveryWayToNameAColumn) {
    EXPECT_EQ(parsed("SELECT a AS x, b y, z = c, 'w' = d, e AS 'v', f 'u', [g h] = i"),
              "(select (as a x) (as b y) (as c z) (as d w) (as e v) (as f u) (as i g h))");
}

TEST(ParserQueries, ReadsStarsAnywhereInTheList) {
    EXPECT_EQ(parsed("SELECT '0' as Ordina ,* FROM t"), "(select (as '0' Ordina) * (from t))");
    EXPECT_EQ(parsed("SELECT t.*, dbo.u.* FROM t, u"), "(select t.* dbo.u.* (from t u))");
}

TEST(ParserQueries, ReadsTopInEveryForm) {
    EXPECT_EQ(parsed("SELECT TOP 1 * FROM t"), "(select (top 1) * (from t))");
    EXPECT_EQ(parsed("SELECT TOP (1 + 2) a FROM t"), "(select (top (+ 1 2)) a (from t))");
    EXPECT_EQ(parsed("SELECT TOP 12.5 PERCENT a FROM t"), "(select (top% 12.5) a (from t))");
}

TEST(ParserQueries, ReadsEveryJoin) {
    EXPECT_EQ(parsed("SELECT 1 FROM a JOIN b ON 1=1 INNER JOIN c ON 2=2 LEFT JOIN d ON 3=3 RIGHT "
                     "OUTER JOIN e ON 4=4 FULL JOIN f ON 5=5 CROSS JOIN g, h"),
              "(select 1 (from (cross (full (right (left (join (join a b (= 1 1)) c (= 2 2)) d "
              "(= 3 3)) e (= 4 4)) f (= 5 5)) g) h))");
}

TEST(ParserQueries, NestsJoinsByTheirConditions) {
    EXPECT_EQ(parsed("SELECT 1 FROM a JOIN b JOIN c ON 1=1 ON 2=2"),
              "(select 1 (from (join a (join b c (= 1 1)) (= 2 2))))");
    EXPECT_EQ(parsed("SELECT 1 FROM a LEFT JOIN (b JOIN c ON 1=1) ON 2=2"),
              "(select 1 (from (left a (join b c (= 1 1)) (= 2 2))))");
}

TEST(ParserQueries, ReadsAliasesAndHints) {
    EXPECT_EQ(parsed("SELECT 1 FROM dbo.t AS x WITH (NOLOCK), u y, v (NOLOCK), w WITH (UPDLOCK, "
                     "HOLDLOCK)"),
              "(select 1 (from (as dbo.t x) (as u y) v w))");
}

TEST(ParserQueries, ReadsHintsBehindAndWithoutWith) {
    EXPECT_EQ(
        parsed("SELECT 1 FROM a (UPDLOCK), b (HOLDLOCK) x, c y (TABLOCKX), d (ROWLOCK, "
               "UPDLOCK), e (INDEX=1), f WITH (INDEX(1)), g (NOLOCK INDEX(i, j)), h HOLDLOCK, "
               "i WITH (FORCESEEK(ix (a, b)), INDEX = (k))"),
        "(select 1 (from a (as b x) (as c y) d e f g h i))");
    EXPECT_EQ(parsed("INSERT t (rowlock) VALUES (1)"), "(insert t (columns rowlock) (row 1))");
    EXPECT_EQ(parsed("UPDATE t WITH (ROWLOCK) SET a = 1 DELETE t (TABLOCK)"),
              "(update t (set a 1))\n(delete t)");
}

TEST(ParserQueries, ReadsTheWaysToJoin) {
    EXPECT_EQ(parsed("SELECT 1 FROM a INNER LOOP JOIN b ON 1=1 LEFT OUTER HASH JOIN c ON 2=2 FULL "
                     "MERGE JOIN d ON 3=3 INNER REMOTE JOIN e ON 4=4"),
              "(select 1 (from (join (full (left (join a b (= 1 1)) c (= 2 2)) d (= 3 3)) e (= 4 "
              "4))))");
}

TEST(ParserQueries, TakesEveryHintOfAQuery) {
    for (const char* hint : {"HASH GROUP",
                             "ORDER GROUP",
                             "CONCAT UNION",
                             "HASH UNION",
                             "MERGE UNION",
                             "LOOP JOIN",
                             "MERGE JOIN",
                             "HASH JOIN",
                             "DISABLE_OPTIMIZED_PLAN_FORCING",
                             "EXPAND VIEWS",
                             "FAST 10",
                             "FORCE ORDER",
                             "FORCE EXTERNALPUSHDOWN",
                             "DISABLE EXTERNALPUSHDOWN",
                             "FORCE SCALEOUTEXECUTION",
                             "DISABLE SCALEOUTEXECUTION",
                             "IGNORE_NONCLUSTERED_COLUMNSTORE_INDEX",
                             "KEEP PLAN",
                             "KEEPFIXED PLAN",
                             "LABEL = 'x'",
                             "MAX_GRANT_PERCENT = 10",
                             "MIN_GRANT_PERCENT = 1",
                             "MAXDOP 2",
                             "MAXRECURSION 5",
                             "NO_PERFORMANCE_SPOOL",
                             "OPTIMIZE FOR UNKNOWN",
                             "OPTIMIZE FOR (@a UNKNOWN, @b = 'x'), RECOMPILE",
                             "PARAMETERIZATION SIMPLE",
                             "PARAMETERIZATION FORCED",
                             "QUERYTRACEON 4199",
                             "RECOMPILE",
                             "ROBUST PLAN",
                             "TABLE HINT (t, INDEX (i), FORCESEEK)",
                             "USE HINT ('a', 'b')",
                             "USE PLAN N'<x/>'"}) {
        const std::string option = std::string(" OPTION (") + hint + ")";
        EXPECT_EQ(parsed("SELECT a FROM t" + option), "(select a (from t))") << hint;
        EXPECT_EQ(parsed("DELETE t" + option + " INSERT t VALUES (1)" + option),
                  "(delete t)\n(insert t (row 1))")
            << hint;
    }
}

TEST(ParserQueries, TellsAValueInBracketsFromAQuery) {
    EXPECT_EQ(parsed("SELECT ((SELECT 2) * 3), (((SELECT 1)) + 1)"),
              "(select (* (select 2) 3) (+ (query (select 1)) 1))");
    EXPECT_EQ(parsed("SELECT 1 FROM t WHERE ((SELECT COUNT(*) FROM u) > 0)"),
              "(select 1 (from t) (where (> (select (COUNT *) (from u)) 0)))");
    EXPECT_EQ(parsed("SELECT 1 FROM t WHERE a IN ((SELECT 2), (SELECT 3)) OR a IN ((SELECT 4))"),
              "(select 1 (from t) (where (or (in a (list (select 2) (select 3))) (in a (query "
              "(select 4))))))");
    EXPECT_EQ(parsed("SELECT TOP (SELECT 1) a, (SELECT 2) FROM t"),
              "(select (top (select 1)) a (select 2) (from t))");
    EXPECT_EQ(parsed("DELETE TOP ((SELECT 1) + 1) FROM t"), "(delete (top (+ (select 1) 1)) t)");
}

TEST(ParserQueries, ReadsDerivedTables) {
    EXPECT_EQ(parsed("SELECT 1 FROM (SELECT a FROM t) AS d, (SELECT 1, 2) e (x, y)"),
              "(select 1 (from (as (select a (from t)) d) (as (select 1 2) e (columns x y))))");
}

TEST(ParserQueries, TellsAQueryInDoubleBracketsFromAJoin) {
    EXPECT_EQ(parsed("SELECT 1 FROM ((SELECT 1 AS a) UNION SELECT 2) AS d"),
              "(select 1 (from (as (union (query (select (as 1 a))) (select 2)) d)))");
    EXPECT_EQ(parsed("SELECT 1 FROM ((SELECT 1 AS a) AS d JOIN t ON 1=1)"),
              "(select 1 (from (join (as (select (as 1 a)) d) t (= 1 1))))");
}

TEST(ParserQueries, ReadsUnionsFromTheLeft) {
    EXPECT_EQ(parsed("SELECT 1 UNION SELECT 2 UNION ALL SELECT 3 ORDER BY 1"),
              "(order (unionall (union (select 1) (select 2)) (select 3)) 1)");
}

TEST(ParserQueries, ReadsAUnionInBracketsWithAnOrderOutside) {
    EXPECT_EQ(parsed(" (  SELECT '0' as Ordina ,* FROM  t  WHERE G='D' UNION  SELECT '1' as Ordina "
                     ",* FROM  t  )  ORDER BY Ordina "),
              "(order (query (union (select (as '0' Ordina) * (from t) (where (= G 'D'))) (select "
              "(as '1' Ordina) * (from t)))) Ordina)");
}

TEST(ParserData, ReadsInserts) {
    EXPECT_EQ(parsed("INSERT INTO t (a, [b]) VALUES (1, DEFAULT), (NULL, 'x')"),
              "(insert t (columns a b) (row 1 DEFAULT) (row NULL 'x'))");
    EXPECT_EQ(parsed("INSERT t VALUES (1)"), "(insert t (row 1))");
    EXPECT_EQ(parsed("INSERT t DEFAULT VALUES"), "(insert t defaults)");
    EXPECT_EQ(parsed("INSERT INTO t (a) SELECT b FROM u"),
              "(insert t (columns a) (select b (from u)))");
    EXPECT_EQ(parsed("INSERT t (SELECT 1)"), "(insert t (query (select 1)))");
}

TEST(ParserData, ReadsUpdates) {
    EXPECT_EQ(parsed("UPDATE t SET a = 1, t.b = DEFAULT WHERE c = 2"),
              "(update t (set a 1) (set t.b DEFAULT) (where (= c 2)))");
    EXPECT_EQ(parsed("UPDATE x SET a = u.b FROM t x JOIN u ON x.i = u.i"),
              "(update x (set a u.b) (from (join (as t x) u (= x.i u.i))))");
    EXPECT_EQ(parsed("UPDATE TOP (2) t SET a = 1"), "(update (top 2) t (set a 1))");
}

TEST(ParserData, ReadsDeletes) {
    EXPECT_EQ(parsed("DELETE FROM t WHERE a = 1"), "(delete t (where (= a 1)))");
    EXPECT_EQ(parsed("DELETE t"), "(delete t)");
    EXPECT_EQ(parsed("DELETE t FROM t INNER JOIN u ON t.a = u.a"),
              "(delete t (from (join t u (= t.a u.a))))");
}

TEST(ParserScripts, ReadsStatementsWithAndWithoutSemicolons) {
    EXPECT_EQ(parsed(";SELECT 1 SELECT 2;; UPDATE t SET a = 1 DELETE t"),
              "(select 1)\n(select 2)\n(update t (set a 1))\n(delete t)");
}

TEST(ParserScripts, ReadsTransactions) {
    EXPECT_EQ(parsed("BEGIN TRAN BEGIN TRANSACTION x COMMIT COMMIT TRAN x ROLLBACK WORK ROLLBACK"),
              "(begin)\n(begin x)\n(commit)\n(commit x)\n(rollback)\n(rollback)");
}

TEST(ParserScripts, KnowsTheLineOfEachStatement) {
    const Script script = parseScript("SELECT 1\n\nSELECT\n 2", {5});
    EXPECT_EQ(script[0].line, 5);
    EXPECT_EQ(script[1].line, 7);
}

TEST(ParserScripts, ReadsAnEmptyScript) {
    EXPECT_TRUE(parseScript("").empty());
    EXPECT_TRUE(parseScript(" -- nothing\n ; ").empty());
}

struct StatementRefusal {
    const char* sql;
    int number;
    int line;
    const char* message;
};

class RefusedStatement : public ::testing::TestWithParam<StatementRefusal> {};

TEST_P(RefusedStatement, NamesWhatIsWrongAndWhere) {
    try {
        (void)parseScript(GetParam().sql);
        FAIL() << "no error for " << GetParam().sql;
    } catch (const ServerError& error) {
        EXPECT_EQ(error.number(), GetParam().number) << GetParam().sql;
        EXPECT_EQ(error.line(), GetParam().line) << GetParam().sql;
        EXPECT_EQ(error.message(), GetParam().message) << GetParam().sql;
    }
}

#define REFUSED(construct)                       \
    "Keyword or statement option '" construct    \
    "' is not supported in this version of the " \
    "database."

INSTANTIATE_TEST_SUITE_P(
    Parser, RefusedStatement,
    ::testing::Values(
        StatementRefusal{"BEGIN TRAN SELEC 1", 102, 1, "Incorrect syntax near '1'."},
        StatementRefusal{"SELECT *\nFROM", 102, 2, "Incorrect syntax near 'FROM'."},
        StatementRefusal{"SELECT * FROM t\nWHERE", 102, 2, "Incorrect syntax near 'WHERE'."},
        StatementRefusal{"SELECT * FROM t ORDER a", 102, 1, "Incorrect syntax near 'a'."},
        StatementRefusal{"SELECT * FROM t,", 102, 1, "Incorrect syntax near ','."},
        StatementRefusal{"SELECT * FROM t JOIN u", 102, 1, "Incorrect syntax near 'u'."},
        StatementRefusal{"SELECT * FROM (SELECT 1)", 102, 1, "Incorrect syntax near ')'."},
        StatementRefusal{"SELECT TOP FROM t", 156, 1, "Incorrect syntax near the keyword 'FROM'."},
        StatementRefusal{
            "SELECT 1 AS []", 1038, 1,
            "An object or column name is missing or empty. For SELECT INTO statements, verify "
            "each column has a name. For other statements, look for empty alias names. Aliases "
            "defined as \"\" or [] are not allowed. Change the alias to a valid name."},
        StatementRefusal{"INSERT INTO t", 102, 1, "Incorrect syntax near 't'."},
        StatementRefusal{"INSERT INTO t VALUES 1", 102, 1, "Incorrect syntax near '1'."},
        StatementRefusal{"UPDATE t\nSET WHERE a = 1", 156, 2,
                         "Incorrect syntax near the keyword 'WHERE'."},
        StatementRefusal{"DELETE WHERE a = 1", 156, 1,
                         "Incorrect syntax near the keyword 'WHERE'."},
        StatementRefusal{"SELECT 1\nBACKUP LOG a TO DISK = 'x'", 40517, 2, REFUSED("BACKUP")},
        StatementRefusal{"MERGE t USING u ON t.a = u.a WHEN MATCHED THEN DELETE", 10713, 1,
                         "A MERGE statement must be terminated by a semi-colon (;)."},
        StatementRefusal{"EXEC AS USER = 'x'", 40517, 1, REFUSED("EXECUTE AS")},
        StatementRefusal{"CREATE RULE r AS 1 = 1", 160, 1, "Rule does not contain a variable."},
        StatementRefusal{"DBCC CHECKIDENT ('t', 1)", 102, 1, "Incorrect syntax near '1'."},
        StatementRefusal{"UPDATE t SET a = 1 WHERE CURRENT OF @c", 16948, 1,
                         "The variable '@c' is not a cursor variable, but it is used in a place "
                         "where a cursor variable is expected."},
        StatementRefusal{"BEGIN DISTRIBUTED TRAN", 40517, 1,
                         REFUSED("BEGIN DISTRIBUTED TRANSACTION")},
        StatementRefusal{"CREATE FUNCTION f (@a int) RETURNS TABLE AS SELECT 1 AS a", 156, 1,
                         "Incorrect syntax near the keyword 'SELECT'."},
        StatementRefusal{"CREATE TRIGGER t ON v INSTEAD INSERT AS SELECT 1", 156, 1,
                         "Incorrect syntax near the keyword 'INSERT'."},
        StatementRefusal{"PRINT 1 CREATE SCHEMA s", 111, 1,
                         "'CREATE SCHEMA' must be the first statement in a query batch."},
        StatementRefusal{"SELECT a FROM t FOR XML EXPLICIT", 40517, 1, REFUSED("FOR XML EXPLICIT")},
        StatementRefusal{"SELECT a FROM t GROUP BY ROLLUP(a) WITH CUBE", 102, 1,
                         "Incorrect syntax near 'CUBE'."},
        StatementRefusal{"SELECT 1 FROM f(a) WITH (b int)", 40517, 1, REFUSED("f WITH")},
        StatementRefusal{"SELECT 1 FROM t PIVOT (SUM(a) FOR b IN (c))", 102, 1,
                         "Incorrect syntax near ')'."},
        StatementRefusal{
            "SELECT 1 FROM t WITH (NOLOCKS)", 321, 1,
            "\"NOLOCKS\" is not a recognized table hints option. If it is intended as a "
            "parameter to a table-valued function or to the CHANGETABLE function, ensure that "
            "your database compatibility mode is set to 90."},
        StatementRefusal{"SELECT 1 FROM t WITH (NOLOCK,)", 102, 1, "Incorrect syntax near ')'."},
        StatementRefusal{"SELECT 1 FROM t OPTION (FASTER 1)", 102, 1,
                         "Incorrect syntax near 'FASTER'."},
        StatementRefusal{"SELECT 1 FROM t OPTION (MAXDOP)", 102, 1, "Incorrect syntax near ')'."},
        StatementRefusal{
            "SELECT 1 FROM t OPTION (MAXRECURSION 40000)", 310, 1,
            "The value 40000 specified for the MAXRECURSION option exceeds the allowed maximum "
            "of 32767."},
        StatementRefusal{"DELETE TOP 2 FROM t", 102, 1, "Incorrect syntax near '2'."},
        StatementRefusal{"INSERT TOP 2 INTO t SELECT 1", 102, 1, "Incorrect syntax near '2'."},
        StatementRefusal{"MERGE TOP 1 t USING u ON 1 = 1 WHEN MATCHED THEN DELETE;", 102, 1,
                         "Incorrect syntax near '1'."},
        StatementRefusal{"SELECT f(1, DEFAULT)", 156, 1,
                         "Incorrect syntax near the keyword 'DEFAULT'."},
        StatementRefusal{"CREATE TABLE t (a int) WITH (SYSTEM_VERSIONING = ON)", 40517, 1,
                         REFUSED("table option SYSTEM_VERSIONING")},
        StatementRefusal{"SELECT SUM(a) OVER (ORDER BY a ROWS 1) FROM t", 102, 1,
                         "Incorrect syntax near ')'."},
        StatementRefusal{
            "SELECT SUM(a) OVER (ORDER BY a RANGE 1 PRECEDING) FROM t", 4194, 1,
            "RANGE is only supported with UNBOUNDED and CURRENT ROW window frame delimiters."},
        StatementRefusal{
            "SELECT SUM(a) OVER (ORDER BY a ROWS 1 FOLLOWING) FROM t", 4193, 1,
            "'BETWEEN 1 FOLLOWING AND CURRENT ROW' is not a valid window frame and cannot be "
            "used with the OVER clause."}));

}  // namespace
}  // namespace kap::tsql
