#include "drivers/odbc/query_analysis.hpp"

#include <gtest/gtest.h>

namespace kap::ado::odbc {
namespace {

// The items of a query: "*", "q.*", "column", "q.column", "(expression)".
std::string itemsOf(std::string_view text) {
    std::string all;
    for (const QueryItem& item : analyse(text).items) {
        const std::string qualifier = item.qualifier.empty() ? "" : item.qualifier + ".";
        all += all.empty() ? "" : " ";
        switch (item.kind) {
            case QueryItem::Kind::Star:
                all += qualifier + "*";
                break;
            case QueryItem::Kind::Column:
                all += qualifier + item.column;
                break;
            case QueryItem::Kind::Expression:
                all += "(expression)";
        }
    }
    return all;
}

std::string tablesOf(std::string_view text) {
    std::string all;
    for (const QueryTable& table : analyse(text).tables) {
        all += (all.empty() ? "" : " ") + (table.schema.empty() ? "" : table.schema + ".") +
               table.name + "=" + table.alias;
    }
    return all;
}

TEST(QueryAnalysis, TellsWhereColumnsComeFrom) {
    EXPECT_EQ(itemsOf("SELECT * FROM Clienti WHERE Codice = 12"), "*");
    EXPECT_EQ(tablesOf("SELECT * FROM Clienti WHERE Codice = 12"), "Clienti=Clienti");
    constexpr const char* kJoin =
        "SELECT c.*, d.Numero AS N, Data, Totale * 2 FROM dbo.Clienti c "
        "INNER JOIN [Doc] AS d ON c.Codice = d.Cliente ORDER BY 1";
    EXPECT_EQ(itemsOf(kJoin), "c.* d.Numero Data (expression)");
    EXPECT_EQ(tablesOf(kJoin), "dbo.Clienti=c Doc=d");
}

TEST(QueryAnalysis, TellsRowsThatAreNoRowsOfATable) {
    for (const char* text : {"SELECT DISTINCT a FROM t", "SELECT a FROM t GROUP BY a",
                             "SELECT a FROM t UNION SELECT b FROM u", "SELECT max(a) FROM t"}) {
        EXPECT_TRUE(analyse(text).isCombined) << text;
        EXPECT_TRUE(analyse(text).isOneQuery) << text;
    }
    EXPECT_FALSE(analyse("SELECT TOP 5 a FROM t ORDER BY b").isCombined);
}

TEST(QueryAnalysis, LeavesOtherTextsToTheServer) {
    for (const char* text : {"", "UPDATE t SET a = 1", "SELECT a FROM t LIMIT 5",
                             "SELECT 1 SELECT 2", "SELECT a INTO u FROM t", "EXEC p"}) {
        EXPECT_FALSE(analyse(text).isOneQuery) << text;
        EXPECT_FALSE(analyse(text).isReadable) << text;
    }
}

TEST(QueryAnalysis, NoticesTextsThatMayChangeTables) {
    EXPECT_TRUE(analyse("create table t (a int)").changesTables);
    EXPECT_TRUE(analyse("SELECT a INTO u FROM t").changesTables);
    EXPECT_TRUE(analyse("DROP TABLE t").changesTables);
    EXPECT_TRUE(analyse("WITH q AS (SELECT 1 AS a) SELECT a INTO u FROM q").changesTables);
    EXPECT_TRUE(analyse("UPDATE t SET a = 1; DROP TABLE u").changesTables);
    EXPECT_TRUE(analyse("EXEC crea").changesTables);
    EXPECT_FALSE(analyse("INSERT INTO t VALUES (1)").changesTables);
    EXPECT_FALSE(analyse("insert\ninto t (created, dropped) VALUES ('drop', 1)").changesTables);
    EXPECT_FALSE(analyse("UPDATE [create] SET \"alter\" = 1 -- drop").changesTables);
    EXPECT_FALSE(analyse("FETCH NEXT FROM c INTO @a /* create */").changesTables);
    EXPECT_FALSE(analyse("SELECT a FROM t").changesTables);
    EXPECT_FALSE(analyse("UPDATE t SET a = 1").changesTables);
}

}  // namespace
}  // namespace kap::ado::odbc
