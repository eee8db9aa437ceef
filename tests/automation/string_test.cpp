#include <kaputil/automation/string.hpp>

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;

TEST(String, CountsUtf16Units) {
    EXPECT_EQ(String(u"citt\u00E0").size(), 5U);
    EXPECT_EQ(String(u"\U0001F600").size(), 2U);
    EXPECT_EQ(String("citt\xC3\xA0")[4], u'\u00E0');
}

TEST(String, GoesToUtf8AndBack) {
    const std::string cases[] = {
        "", "abc", "citt\xC3\xA0", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", std::string("a\0b", 3)};
    for (const std::string& utf8 : cases) {
        EXPECT_EQ(String(utf8).utf8(), utf8);
    }
}

TEST(String, RefusesBytesThatAreNotUtf8) {
    const char* const cases[] = {"\x80",  "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                 "ab\xFF"};
    for (const char* bytes : cases) {
        EXPECT_EQ(raisedBy([&] { return String(bytes); }), 5);
    }
}

TEST(String, RefusesToCarryHalfASurrogatePairAsUtf8) {
    EXPECT_EQ(raisedBy([] { return String(std::u16string(1, u'\xD800')).utf8(); }), 5);
    EXPECT_EQ(raisedBy([] { return String(std::u16string(1, u'\xDC00')).utf8(); }), 5);
    EXPECT_EQ(raisedBy([] { return String(std::u16string(u"\xDC00\xD800")).utf8(); }), 5);
}

TEST(String, ComparesByUnitAndJoins) {
    EXPECT_EQ(String(u"a") + u"b", u"ab");
    EXPECT_NE(String(u"a"), u"A");
    EXPECT_LT(String(u"B"), String(u"a"));
    String text(u"a");
    text += u"bc";
    EXPECT_EQ(text, u"abc");
}

TEST(String, CanBeAKey) {
    const std::unordered_set<String> names = {u"a", u"b", u"a"};
    EXPECT_EQ(names.size(), 2U);
}

}  // namespace
}  // namespace kap
