#include <gtest/gtest.h>

#include "tree_text.hpp"

namespace kap::tsql {
namespace {

using testing::parsed;

TEST(ParserMerge, ReadsTheClausesInTheirOrder) {
    EXPECT_EQ(parsed("MERGE TOP (5) INTO t AS x USING (SELECT 1 AS a) s ON x.a = s.a "
                     "WHEN MATCHED AND s.a > 1 THEN DELETE "
                     "WHEN MATCHED THEN UPDATE SET b = s.a, x.c = DEFAULT "
                     "WHEN NOT MATCHED BY TARGET THEN INSERT (a) VALUES (s.a) "
                     "WHEN NOT MATCHED BY SOURCE THEN UPDATE SET b = 0;"),
              "(merge (top 5) t x (using (from (as (select (as 1 a)) s))) (on (= x.a s.a)) "
              "(matched (> s.a 1) (delete)) (matched (update (set b s.a) (set x.c DEFAULT))) "
              "(missing (insert (columns a) (row s.a))) (extra (update (set b 0))))");
}

TEST(ParserMerge, TakesTheWordUsingForNoAlias) {
    EXPECT_EQ(parsed("MERGE t USING u ON 1 = 1 WHEN NOT MATCHED THEN INSERT DEFAULT VALUES; "
                     "SELECT 1"),
              "(merge t (using (from u)) (on (= 1 1)) (missing (insert defaults)))\n(select 1)");
}

TEST(ParserMerge, ReadsTheRowOfACursor) {
    EXPECT_EQ(parsed("UPDATE t SET a = 1, b = 2 WHERE CURRENT OF GLOBAL c"),
              "(update t (set a 1) (set b 2) (where (currentof c (columns a b))))");
    EXPECT_EQ(parsed("DELETE t WHERE CURRENT OF c"), "(delete t (where (currentof c)))");
}

TEST(ParserGroups, ReadsRollupsAsTheSetsThatTheyStandFor) {
    EXPECT_EQ(parsed("SELECT 1 FROM t GROUP BY a, b WITH ROLLUP"),
              "(select 1 (from t) (group a b) (sets (set 0 1) (set 0) (none)))");
    EXPECT_EQ(parsed("SELECT 1 FROM t GROUP BY a, ROLLUP((b), (c, d))"),
              "(select 1 (from t) (group a b c d) (sets (set 0 1 2 3) (set 0 1) (set 0)))");
}

TEST(ParserGroups, ReadsCubesAndGroupingSets) {
    EXPECT_EQ(parsed("SELECT 1 FROM t GROUP BY CUBE(a, b)"),
              "(select 1 (from t) (group a b) (sets (set 0 1) (set 0) (set 1) (none)))");
    EXPECT_EQ(parsed("SELECT 1 FROM t GROUP BY GROUPING SETS ((a, b), ROLLUP(c), ())"),
              "(select 1 (from t) (group a b c) (sets (set 0 1) (set 2) (none) (none)))");
}

TEST(ParserGroups, TellsAnExpressionInBracketsFromASet) {
    EXPECT_EQ(parsed("SELECT 1 FROM t GROUP BY (a + 1) * 2, (b)"),
              "(select 1 (from t) (group (* (+ a 1) 2) b))");
}

}  // namespace
}  // namespace kap::tsql
