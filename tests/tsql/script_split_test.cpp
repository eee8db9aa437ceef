#include "tsql/script_split.hpp"

#include <gtest/gtest.h>

#include "tsql/server_error.hpp"

namespace kap::tsql {
namespace {

TEST(ScriptSplit, KeepsATextWithoutGoWhole) {
    const auto batches = splitScript("SELECT 1\nSELECT 2");
    ASSERT_EQ(batches.size(), 1U);
    EXPECT_EQ(batches[0].text, "SELECT 1\nSELECT 2");
    EXPECT_EQ(batches[0].firstLine, 1);
    EXPECT_EQ(batches[0].count, 1);
}

TEST(ScriptSplit, CutsAtGoLinesInAnyCaseAndKeepsLineNumbers) {
    const auto batches = splitScript("a\r\n go \r\n\r\nb\nGo -- done\nc");
    ASSERT_EQ(batches.size(), 3U);
    EXPECT_EQ(batches[0].text, "a\r\n");
    EXPECT_EQ(batches[1].text, "\r\nb\n");
    EXPECT_EQ(batches[1].firstLine, 3);
    EXPECT_EQ(batches[2].text, "c");
    EXPECT_EQ(batches[2].firstLine, 6);
}

TEST(ScriptSplit, ReadsTheCountOfAGoLine) {
    const auto batches = splitScript("a\nGO 5\nb");
    ASSERT_EQ(batches.size(), 2U);
    EXPECT_EQ(batches[0].count, 5);
    EXPECT_EQ(batches[1].count, 1);
}

TEST(ScriptSplit, LeavesOutEmptyBatches) {
    EXPECT_TRUE(splitScript("GO\n \nGO\n").empty());
}

TEST(ScriptSplit, IgnoresGoInsideTextsNamesAndComments) {
    EXPECT_EQ(splitScript("SELECT '\nGO\n'").size(), 1U);
    EXPECT_EQ(splitScript("SELECT [\nGO\n]").size(), 1U);
    EXPECT_EQ(splitScript("/* a /* b */\nGO\n*/ SELECT 1").size(), 1U);
    EXPECT_EQ(splitScript("SELECT 'it''s' -- don't\nGO\nSELECT 2").size(), 2U);
}

TEST(ScriptSplit, IgnoresWordsThatOnlyStartWithGo) {
    EXPECT_EQ(splitScript("a\nGOTO x\nb\nGO_ON\nc").size(), 1U);
}

TEST(ScriptSplit, RefusesACountThatIsNoNumber) {
    try {
        (void)splitScript("a\nGO x");
        FAIL();
    } catch (const ServerError& error) {
        EXPECT_EQ(error.number(), 102);
        EXPECT_EQ(error.line(), 2);
        EXPECT_EQ(error.message(), "Incorrect syntax near 'x'.");
    }
}

}  // namespace
}  // namespace kap::tsql
