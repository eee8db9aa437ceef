#include "drivers/odbc/known_queries.hpp"

#include <gtest/gtest.h>

namespace kap::ado::odbc {
namespace {

TEST(KnownQueries, TakeTextsThatDifferInConstantsForOne) {
    EXPECT_EQ(KnownQueries::shapeOf("SELECT * FROM doc WHERE a = 12 AND b = 'l''una'"),
              KnownQueries::shapeOf("SELECT * FROM doc WHERE a = 7 AND b = ''"));
    EXPECT_EQ(KnownQueries::shapeOf("SELECT 1.5"), "SELECT 0.0");
    EXPECT_EQ(KnownQueries::shapeOf("SELECT 'x"), "SELECT '");
}

TEST(KnownQueries, TellNamesApart) {
    for (const char* text : {"SELECT a1 FROM t2", "SELECT \"1\" FROM [2]", "SELECT @1, #2, $3",
                             "SELECT [a'1'] FROM t"}) {
        EXPECT_EQ(KnownQueries::shapeOf(text), text);
    }
}

TEST(KnownQueries, RememberWhatTheTextSays) {
    KnownQueries queries;
    KnownQuery& first = queries.of("SELECT a FROM doc WHERE n = 1");
    EXPECT_TRUE(first.analysis.isOneQuery);
    ASSERT_EQ(first.analysis.tables.size(), 1U);
    EXPECT_EQ(&queries.of("SELECT a FROM doc WHERE n = 2"), &first);
    EXPECT_NE(&queries.of("SELECT a FROM doc WHERE m = 2"), &first);
}

TEST(KnownQueries, TellTextsAnewThatAreLongOrQuoteOtherwise) {
    KnownQueries queries;
    EXPECT_EQ(queries.of("SELECT a FROM t -- '1").analysis.tables.size(), 1U);
    EXPECT_EQ(queries.of("SELECT a FROM t -- '2\n, u").analysis.tables.size(), 2U);
    const std::string list(5000, ' ');
    EXPECT_EQ(queries.of("SELECT a" + list + "FROM t").analysis.tables.size(), 1U);
    EXPECT_EQ(queries.of("SELECT a" + list + "FROM t, u").analysis.tables.size(), 2U);
}

TEST(KnownQueries, AreBounded) {
    KnownQueries queries;
    for (char first = 'a'; first <= 'z'; ++first) {
        for (char second = 'a'; second <= 'z'; ++second) {
            const std::string name{first, second, '_'};
            EXPECT_EQ(queries.of("SELECT x FROM " + name).analysis.tables.front().name, name);
        }
    }
}

}  // namespace
}  // namespace kap::ado::odbc
