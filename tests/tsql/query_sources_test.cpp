#include "tsql/analysis/query_sources.hpp"

#include <gtest/gtest.h>

#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

TEST(QuerySources, NameTheTablesAsTheyAreWritten) {
    const QuerySources found = sourcesOf(
        "SELECT c.Codice, 1 + 1 FROM azienda.dbo.[Clienti] c JOIN Zone ON Zone.Id = c.Zona");
    EXPECT_TRUE(found.isOneQuery);
    EXPECT_TRUE(found.isReadable);
    EXPECT_FALSE(found.isCombined);
    ASSERT_EQ(found.tables.size(), 2U);
    EXPECT_EQ(found.tables[0].written, "azienda.dbo.Clienti");
    EXPECT_EQ(found.tables[0].catalog, "azienda");
    EXPECT_EQ(found.tables[0].schema, "dbo");
    EXPECT_EQ(found.tables[0].alias, "c");
    EXPECT_EQ(found.tables[1].alias, "Zone");
    ASSERT_EQ(found.items.size(), 2U);
    EXPECT_EQ(found.items[0].qualifier, "c");
    EXPECT_EQ(found.items[0].column, "Codice");
    EXPECT_EQ(found.items[1].kind, QueryItem::Kind::Expression);
}

TEST(QuerySources, AreUnknownBehindADerivedTable) {
    const QuerySources found = sourcesOf("SELECT d.a FROM (SELECT a FROM t) d");
    EXPECT_TRUE(found.isOneQuery);
    EXPECT_FALSE(found.isReadable);
}

TEST(QuerySources, TellRowsThatAreNoRowsOfATable) {
    for (const char* query : {"SELECT DISTINCT a FROM t", "SELECT a FROM t GROUP BY a",
                              "SELECT MAX(a) FROM t", "SELECT a FROM t UNION SELECT a FROM u"}) {
        EXPECT_TRUE(sourcesOf(query).isCombined) << query;
    }
}

TEST(QuerySources, AreOfOneQueryAlone) {
    EXPECT_FALSE(sourcesOf("SELECT a FROM t; SELECT b FROM u").isOneQuery);
    EXPECT_FALSE(sourcesOf("SELECT a INTO u FROM t").isOneQuery);
    EXPECT_FALSE(sourcesOf("UPDATE t SET a = 1").isOneQuery);
    EXPECT_THROW(static_cast<void>(sourcesOf("SELECT a FROM")), ServerError);
}

}  // namespace
}  // namespace kap::tsql
