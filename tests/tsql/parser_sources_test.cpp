#include <gtest/gtest.h>

#include "tree_text.hpp"
#include "tsql/parser.hpp"

namespace kap::tsql {
namespace {

using testing::parsed;

TEST(ParserSources, ReadsApplyFromLeftToRight) {
    EXPECT_EQ(parsed("SELECT * FROM t CROSS APPLY (SELECT t.a) x OUTER APPLY f(x.a, DEFAULT) AS y "
                     "(b)"),
              "(select * (from (outerapply (crossapply t (as (select t.a) x)) (rowsof f (with x.a "
              "DEFAULT) y (columns b)))))");
}

TEST(ParserSources, ReadsPivotBehindTablesAndJoins) {
    EXPECT_EQ(
        parsed("SELECT * FROM t AS s PIVOT (SUM(v) FOR n IN (a)) AS p"),
        "(select * (from (pivot (select * (from (as t s))) n (names a) (with (SUM (case (when "
        "(= n N'a') v)))) p)))");
    EXPECT_EQ(parsed("SELECT * FROM t UNPIVOT (v FOR n IN (a, b)) AS p"),
              "(select * (from (unpivot (select * (from t)) v n (from a b) p)))");
}

TEST(ParserSources, ReadsFunctionsThatReturnTables) {
    EXPECT_EQ(parsed("CREATE FUNCTION f (@a int) RETURNS TABLE AS RETURN (SELECT @a AS b)"),
              "(function f (@a int) (query (select (as @a b))))");
    EXPECT_EQ(parsed("CREATE FUNCTION f () RETURNS @t TABLE (a int) AS BEGIN RETURN END"),
              "(function f (create @t (a int)) (block (return)))");
}

TEST(ParserSources, ReadsRowsAsXmlAndJson) {
    EXPECT_EQ(parsed("SELECT a FROM t ORDER BY a FOR XML PATH('r'), ROOT, ELEMENTS XSINIL, TYPE"),
              "(xml path (order (select a (from t)) a) row:r root:root elements nulls type)");
    EXPECT_EQ(parsed("SELECT a FROM t FOR JSON AUTO, WITHOUT_ARRAY_WRAPPER"),
              "(json auto (select a (from t)) single)");
    EXPECT_EQ(
        parsed("SELECT * FROM OPENJSON(@j, '$.a') WITH (b int '$.c', d nvarchar(max) AS JSON)"),
        "(select * (from (rowsof OPENJSON (with @j '$.a') (json b:int:$.c "
        "d:nvarchar(max):json))))");
}

TEST(ParserSources, ReadsDefaultsAndRules) {
    EXPECT_EQ(parsed("CREATE DEFAULT dbo.zero AS 0"), "(default dbo.zero 0)");
    EXPECT_EQ(parsed("CREATE RULE r AS @a > 0 AND @A < 9"), "(rule r @a > 0 AND @A < 9)");
    EXPECT_EQ(parsed("DROP RULE r, s"), "(drop rule r s)");
}

TEST(ParserSources, ReadsSchemas) {
    EXPECT_EQ(parsed("CREATE SCHEMA s AUTHORIZATION dbo CREATE TABLE t (a int) CREATE VIEW v AS "
                     "SELECT 1 AS a"),
              "(schema s (create s.t (a int)) (view s.v (select (as 1 a))))");
    EXPECT_EQ(parsed("ALTER SCHEMA s TRANSFER TYPE::dbo.t"), "(transfer s dbo.t type)");
    EXPECT_EQ(parsed("DROP SCHEMA IF EXISTS s"), "(drop schema ifexists s)");
    EXPECT_EQ(parsed("SELECT * FROM db..t, ..u"), "(select * (from db..t ..u))");
}

}  // namespace
}  // namespace kap::tsql
