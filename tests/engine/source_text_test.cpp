#include "engine/catalog/source_text.hpp"

#include <gtest/gtest.h>

#include "engine/catalog/tables.hpp"
#include "engine/sqlite/definition_notes.hpp"

namespace kap::engine {
namespace {

std::string withSource(const std::string& sql, std::string_view source) {
    return sql + sourceComment(source);
}

TEST(SourceText, ComesBackWhateverItHolds) {
    for (const char* source : {"getdate()", "A LIKE '%*/%'", "'/*= x */'", "'%2A' + '%%'",
                               "(B > 0 -- note\n)", "/* a /* b */ */ 1", ""}) {
        const std::string sql = withSource("kap_x(\"A\")", source);
        EXPECT_EQ(sourceOf(sql), source);
        EXPECT_EQ(sourceOf("(" + sql + ")"), source);
        EXPECT_EQ(withoutSource(sql), "kap_x(\"A\")");
    }
}

TEST(SourceText, IsNotThereInAFileOfBefore) {
    for (const char* sql : {"kap_now()", "'/*= x */'", "1 /* x */ + 2", ""}) {
        EXPECT_EQ(sourceOf(sql), std::nullopt) << sql;
        EXPECT_EQ(withoutSource(sql), sql);
    }
    EXPECT_EQ(shownDefinition("kap_now()"), "(kap_now())");
}

TEST(SourceText, IsShownInBracketsOnce) {
    EXPECT_EQ(shownDefinition(withSource("x", "getdate()")), "(getdate())");
    EXPECT_EQ(shownDefinition(withSource("x", "(1)")), "(1)");
    EXPECT_EQ(shownDefinition(withSource("x", "(1) + (2)")), "((1) + (2))");
    EXPECT_EQ(shownDefinition("(" + withSource("x", "(a > ')')") + ")"), "(a > ')')");
}

TEST(SourceText, OfAnAmountHasItsPointInAFileOfBefore) {
    Column column;
    column.type = {tsql::SqlType::Money};
    for (const auto& [stored, shown] : std::initializer_list<std::pair<const char*, const char*>>{
             {"-15000", "-1.5000"}, {"5", "0.0005"}, {"-5", "-0.0005"}, {"kap_x(1)", "kap_x(1)"}}) {
        column.defaultSql = stored;
        EXPECT_EQ(shownSource(column), shown);
    }
    column.type = {tsql::SqlType::Int};
    column.defaultSql = "15";
    EXPECT_EQ(shownSource(column), "15");
}

TEST(SourceText, CallsAColumnByItsNewName) {
    EXPECT_EQ(withColumnRenamed("[B] > 0 AND b <> 'B' AND a.B = 1", "B", "C]d"),
              "[C]]d] > 0 AND [C]]d] <> 'B' AND a.[C]]d] = 1");
}

TEST(SourceText, OfWhatWasAlteredMakesTheSame) {
    EXPECT_EQ(asCreation("-- x\nalter VIEW V AS SELECT 1"), "-- x\nCREATE VIEW V AS SELECT 1");
    EXPECT_EQ(asCreation("CREATE VIEW V AS SELECT 1"), "CREATE VIEW V AS SELECT 1");
}

}  // namespace
}  // namespace kap::engine
