#include "base/unicode.hpp"

#include <gtest/gtest.h>

#include <string>

namespace kap::unicode {
namespace {

TEST(Unicode, MapsCaseOneUnitToOneUnit) {
    EXPECT_EQ(upper(std::u16string_view(u"abc \u00E0\u00E8\u0438 1")), u"ABC \u00C0\u00C8\u0418 1");
    EXPECT_EQ(lower(std::u16string_view(u"ABC \u00C0\u0418")), u"abc \u00E0\u0438");
    EXPECT_EQ(upper(u'\u00DF'), u'\u00DF');
    EXPECT_EQ(upper(std::u16string_view(u"stra\u00DFe")).size(), 6U);
}

TEST(Unicode, LeavesSurrogatesAsTheyAreWhenMappingCase) {
    EXPECT_EQ(upper(std::u16string_view(u"\U0001F600")), u"\U0001F600");
    EXPECT_EQ(upper(std::u16string(1, u'\xD83D')), std::u16string(1, u'\xD83D'));
}

TEST(Unicode, ComparesNamesIgnoringCase) {
    EXPECT_TRUE(sameName(u"Citt\u00E0", u"CITT\u00C0"));
    EXPECT_FALSE(sameName(u"a", u"ab"));
    EXPECT_FALSE(sameName(u"a", u"b"));
    EXPECT_EQ(NameHash()(u"Citt\u00E0"), NameHash()(u"cITT\u00C0"));
}

TEST(Unicode, TrimsBlanksOnly) {
    EXPECT_EQ(trim(u"  a b  "), u"a b");
    EXPECT_EQ(trimLeft(u"  a "), u"a ");
    EXPECT_EQ(trimRight(u" a  "), u" a");
    EXPECT_EQ(trim(u"   "), u"");
    EXPECT_EQ(trim(u""), u"");
    EXPECT_EQ(trim(u"\ta\u00A0"), u"\ta\u00A0");
}

TEST(Unicode, TellsWhetherBytesAreUtf8AsTheConversionDoes) {
    for (const char* bytes : {"", "abc", "citt\xC3\xA0", "\xF0\x9F\x98\x80", "citt\xE0", "\xC3",
                              "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xFFz"}) {
        EXPECT_EQ(isUtf8(bytes), utf16(bytes).has_value()) << bytes;
    }
}

TEST(Unicode, ShowsHalfASurrogatePairAsReplacement) {
    EXPECT_EQ(displayUtf8(std::u16string(1, u'\xD800')), "\xEF\xBF\xBD");
    EXPECT_EQ(displayUtf8(u"a\u20AC"), "a\xE2\x82\xAC");
}

}  // namespace
}  // namespace kap::unicode
