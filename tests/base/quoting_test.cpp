#include "base/quoting.hpp"

#include <gtest/gtest.h>

namespace kap {
namespace {

TEST(Quoting, DoublesTheClosingSignAlone) {
    EXPECT_EQ(inBrackets("a]b[c"), "[a]]b[c]");
    EXPECT_EQ(enclosed(u"]]", u'[', u']'), u"[]]]]]");
}

TEST(Quoting, DoublesEverySignOfAConstant) {
    EXPECT_EQ(textConstant("l'altro''"), "'l''altro'''''");
    EXPECT_EQ(nationalConstant("c'è"), "N'c''è'");
    EXPECT_EQ(inQuotes("un \"nome\""), "\"un \"\"nome\"\"\"");
}

TEST(Quoting, EnclosesNothing) {
    EXPECT_EQ(textConstant(""), "''");
    EXPECT_EQ(inBrackets(""), "[]");
}

TEST(Quoting, AppendsBehindWhatIsThere) {
    std::string text = "'";
    appendDoubling(text, "'", '\'');
    EXPECT_EQ(text, "'''");
    std::u16string wide = u"EXEC '";
    appendDoubling(wide, u"'x'", u'\'');
    EXPECT_EQ(wide, u"EXEC '''x''");
}

TEST(Quoting, KeepsZeros) {
    EXPECT_EQ(textConstant(std::string_view("a\0'b", 4)), std::string("'a\0''b'", 7));
}

}  // namespace
}  // namespace kap
