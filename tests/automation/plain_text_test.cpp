#include <kaputil/automation/plain_text.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include <kaputil/automation/locale.hpp>

#include "support/shown.hpp"

namespace kap::plain {
namespace {

TEST(PlainText, WritesNumbersTheSameInEveryLocale) {
    const LocaleScope italian("it-IT");
    EXPECT_EQ(text(-1234567), "-1234567");
    EXPECT_EQ(text(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(shortest(0.1), "0.1");
    EXPECT_EQ(shortest(0.1F), "0.1");
    EXPECT_EQ(shortest(1e300), "1e+300");
    EXPECT_EQ(fixed(2.675, 2), "2.67");
    EXPECT_EQ(fixed(-1e300, 1).size(), 304U);
    EXPECT_EQ(scientific(1234.5, 2), "1.23e+03");
    EXPECT_EQ(general(1234567.0, 3), "1.23e+06");
}

TEST(PlainText, FillsUpWithZerosBehindTheSign) {
    EXPECT_EQ(padded(7, 3), "007");
    EXPECT_EQ(padded(-7, 3), "-007");
    EXPECT_EQ(padded(1234, 3), "1234");
}

TEST(PlainText, ReadsWholeNumbersAndNothingElse) {
    EXPECT_EQ(readWhole("-12"), -12);
    EXPECT_EQ(readInt("0012"), 12);
    for (const char* wrong : {"", "-", "+1", " 1", "1 ", "1.0", "abc", "99999999999999999999"}) {
        EXPECT_FALSE(readWhole(wrong)) << wrong;
    }
    EXPECT_FALSE(readInt("3000000000"));
}

TEST(PlainText, ReadsRealNumbersAndTellsTheirRange) {
    EXPECT_EQ(readReal("-1.5e3")->value, -1500.0);
    EXPECT_TRUE(readReal("1e308")->inRange);
    EXPECT_FALSE(readReal("1e309")->inRange);
    EXPECT_FALSE(readReal("1e-400")->inRange);
    for (const char* wrong : {"", ".", "1,5", "1.5x", "inf", "nan", "0x10", "1e", "--1"}) {
        EXPECT_FALSE(readReal(wrong)) << wrong;
    }
}

TEST(PlainText, WritesDatesForPrograms) {
    EXPECT_EQ(isoDate(Date{37980.75}), "2003-12-25");
    EXPECT_EQ(isoDateTime(Date{37980.75}), "2003-12-25 18:00:00");
    EXPECT_EQ(isoDateTime(Date{37980.75 + 0.25 / 86400}), "2003-12-25 18:00:00.250");
    EXPECT_EQ(isoDateTime(Date{-1.25}), "1899-12-29 06:00:00");
    EXPECT_EQ(isoDate(Date{-657434}), "0100-01-01");
    EXPECT_EQ(isoDateTime(Date{2958465.999999999}), "9999-12-31 23:59:59.999");
    EXPECT_EQ(test::raisedBy([] { return isoDate(Date{3e6}); }), 6);
}

}  // namespace
}  // namespace kap::plain
