#include <kaputil/automation/format.hpp>

#include <gtest/gtest.h>

#include <utility>

#include <kaputil/automation/locale.hpp>

#include "support/shown.hpp"

namespace kap::convert {
namespace {

using test::raisedBy;

class Format : public testing::Test {
    LocaleScope italian_{"it-IT"};
};

constexpr Date kChristmasDay{37980};
constexpr Date kAfternoon{37980.75 + 5.0 / 1440};  // 25 December 2003, 18:05

TEST_F(Format, WritesDatesByTheirParts) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"dd/mm/yyyy", u"25/12/2003"},
        {u"yyyymmdd", u"20031225"},
        {u"d-m-yy", u"25-12-03"},
        {u"dddd d mmmm yyyy", u"giovedì 25 dicembre 2003"},
        {u"ddd mmm", u"gio dic"},
        {u"ddddd", u"25/12/2003"},
        {u"dddddd", u"giovedì 25 dicembre 2003"},
        {u"w ww q y", u"5 52 4 359"},
        {u"\"il\" dd \\d\\e\\l mm", u"il 25 del 12"},
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(format(kChristmasDay, pattern), expected);
    }
}

TEST_F(Format, WritesTimesByTheirParts) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"hh:nn:ss", u"18:05:00"},
        {u"h:n:s", u"18:5:0"},
        {u"hh:mm", u"18:05"},
        {u"h mm", u"18 05"},
        {u"mm", u"12"},
        {u"ttttt", u"18:05:00"},
        {u"h:nn AM/PM", u"6:05 PM"},
        {u"hh:nn am/pm", u"06:05 pm"},
        {u"h A/P", u"6 P"},
        {u"a/p h", u"p 6"},
        {u"AMPM", u"PM"},
        {u"c", u"25/12/2003 18:05:00"},
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(format(kAfternoon, pattern), expected);
    }
}

TEST_F(Format, WritesMidnightAsTwelveInHalves) {
    EXPECT_EQ(format(kChristmasDay, u"h:nn AM/PM"), u"12:00 AM");
    EXPECT_EQ(format(kChristmasDay, u"ttttt"), u"00:00:00");
}

TEST_F(Format, KnowsTheNamedFormatsOfDates) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"General Date", u"25/12/2003 18:05:00"},
        {u"Long Date", u"giovedì 25 dicembre 2003"},
        {u"Medium Date", u"25-dic-03"},
        {u"short date", u"25/12/2003"},
        {u"Long Time", u"18:05:00"},
        {u"Medium Time", u"06:05 PM"},
        {u"Short Time", u"18:05"},
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(format(kAfternoon, pattern), expected);
    }
    EXPECT_EQ(format(kChristmasDay, u"General Date"), u"25/12/2003");
    EXPECT_EQ(format(Date{0.25}, u"General Date"), u"06:00:00");
}

TEST_F(Format, UsesTheLocalesNamesAndSeparators) {
    const LocaleScope american("en-US");
    EXPECT_EQ(format(kAfternoon, u"dddd, mmmm d"), u"Thursday, December 25");
    EXPECT_EQ(format(kAfternoon, u"Short Date"), u"12/25/2003");
    EXPECT_EQ(format(1234.5, u"Currency"), u"$1,234.50");
    EXPECT_EQ(format(-1234.5, u"Currency"), u"($1,234.50)");
}

TEST_F(Format, CountsWeekdaysFromTheFirstDayGiven) {
    EXPECT_EQ(format(kChristmasDay, u"w"), u"5");  // a Thursday
    EXPECT_EQ(format(kChristmasDay, u"w", FirstDay::Monday), u"4");
    EXPECT_EQ(format(kChristmasDay, u"w", FirstDay::Thursday), u"1");
    EXPECT_EQ(format(kChristmasDay, u"w", FirstDay::Friday), u"7");
}

TEST_F(Format, CountsWeeksFromTheOneWithNewYearsDay) {
    EXPECT_EQ(format(Date{37622}, u"ww"), u"1");   // Wednesday, 1 January 2003
    EXPECT_EQ(format(Date{37625}, u"ww"), u"1");   // Saturday
    EXPECT_EQ(format(Date{37626}, u"ww"), u"2");   // Sunday
    EXPECT_EQ(format(Date{38717}, u"ww"), u"53");  // Saturday, 31 December 2005
}

TEST_F(Format, CountsWeeksFromTheFirstWithFourDaysOrAFullOne) {
    const auto week = [](double day, FirstWeek first) {
        return format(Date{day}, u"ww", FirstDay::Monday, first);
    };
    EXPECT_EQ(week(38353, FirstWeek::FourDays), u"53");  // Saturday, 1 January 2005: of 2004
    EXPECT_EQ(week(38355, FirstWeek::FourDays), u"1");   // Monday, 3 January 2005
    EXPECT_EQ(week(37984, FirstWeek::FourDays), u"1");   // Monday, 29 December 2003: of 2004
    EXPECT_EQ(week(37984, FirstWeek::FullWeek), u"52");
    EXPECT_EQ(week(37987, FirstWeek::FullWeek), u"52");  // Thursday, 1 January 2004
    EXPECT_EQ(week(37991, FirstWeek::FullWeek), u"1");   // Monday, 5 January 2004
}

TEST_F(Format, ReadsTextsAsDatesWhereTheFormatIsOne) {
    EXPECT_EQ(format(u"25/12/03", u"yyyy-mm-dd"), u"2003-12-25");
    EXPECT_EQ(format(u"37980", u"yyyy-mm-dd"), u"2003-12-25");
    EXPECT_EQ(format(u"domani", u"yyyy-mm-dd"), u"domani");
    EXPECT_EQ(format(u"", u"dd/mm/yyyy"), u"");
    EXPECT_EQ(format(37980, u"dd/mm/yyyy"), u"25/12/2003");
    EXPECT_EQ(format(1e10, u"dd/mm/yyyy"), u"10000000000");
}

TEST_F(Format, WritesNumbersByTheirPlaces) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"0", u"1235"},        {u"0.00", u"1234,57"},         {u"#,##0.00", u"1.234,57"},
        {u"000000", u"001235"}, {u"#.####", u"1234,567"},      {u".00", u"1234,57"},
        {u"0%", u"123457%"},    {u"0.00E+00", u"1,23E+03"},    {u"0,.0", u"1,2"},
        {u"00-00", u"12-35"},   {u"0 \"euro\"", u"1235 euro"}, {u"#,##0\\ \\E", u"1.235 E"},
    };
    for (const auto& [pattern, expected] : cases) {
        EXPECT_EQ(format(1234.567, pattern), expected);
    }
}

TEST_F(Format, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(format(2.5, u"0"), u"3");
    EXPECT_EQ(format(-2.5, u"0"), u"-3");
    EXPECT_EQ(format(0.125, u"0.00"), u"0,13");
    EXPECT_EQ(format(0.999, u"0.0"), u"1,0");
    EXPECT_EQ(format(9.995, u"0.00E+0"), u"1,00E+1");
}

TEST_F(Format, RoundsOnceWhereTheExponentMovesByIt) {
    EXPECT_EQ(format(9.9949, u"0.00E+0"), u"9,99E+0");
    EXPECT_EQ(format(9.9951, u"0.00E+0"), u"1,00E+1");
    EXPECT_EQ(format(99.95, u"00.0E+0"), u"10,0E+1");
    EXPECT_EQ(format(99.9499, u"00.0E+0"), u"99,9E+0");
    EXPECT_EQ(format(0.09996, u"0.##E+0"), u"1,E-1");
    EXPECT_EQ(format(9.4999, u"0E+0"), u"9E+0");
    EXPECT_EQ(format(9.5, u"0E+0"), u"1E+1");
}

TEST_F(Format, HasSectionsForNegativeNumbersZeroAndNull) {
    const char16_t* pattern = u"0.0;(0.0);\"zero\";\"nulla\"";
    EXPECT_EQ(format(1.5, pattern), u"1,5");
    EXPECT_EQ(format(-1.5, pattern), u"(1,5)");
    EXPECT_EQ(format(0, pattern), u"zero");
    EXPECT_EQ(format(Variant::null(), pattern), u"nulla");
    EXPECT_EQ(format(-1.5, u"0.0"), u"-1,5");
    EXPECT_EQ(format(-5, u"\\L 0"), u"-L 5");
}

TEST_F(Format, KnowsTheNamedFormatsOfNumbers) {
    EXPECT_EQ(format(1234.567, u"General Number"), u"1234,567");
    EXPECT_EQ(format(1234.567, u"Fixed"), u"1234,57");
    EXPECT_EQ(format(1234.567, u"Standard"), u"1.234,57");
    EXPECT_EQ(format(0.05, u"Percent"), u"5,00%");
    EXPECT_EQ(format(1234.567, u"Scientific"), u"1,23E+03");
    EXPECT_EQ(format(-1234.567, u"Currency"), u"-1.234,57 €");
    EXPECT_EQ(format(1, u"Yes/No"), u"Sì");
    EXPECT_EQ(format(0, u"Yes/No"), u"No");
    EXPECT_EQ(format(true, u"True/False"), u"Vero");
    EXPECT_EQ(format(u"forse", u"Yes/No"), u"forse");
}

TEST_F(Format, WritesTextsByTheirPlaces) {
    EXPECT_EQ(format(u"abc", u"@@@@@"), u"  abc");
    EXPECT_EQ(format(u"abc", u"!@@@@@"), u"abc  ");
    EXPECT_EQ(format(u"abc", u"&&&&&"), u"abc");
    EXPECT_EQ(format(u"Abc", u">"), u"ABC");
    EXPECT_EQ(format(u"Abc", u"<"), u"abc");
    EXPECT_EQ(format(u"123456", u"@@@-@@"), u"123-456");
    EXPECT_EQ(format(u"", u"@;vuoto"), u"vuoto");
}

TEST_F(Format, WritesTheValueAsTextWithoutAFormat) {
    EXPECT_EQ(format(1.5, u""), u"1,5");
    EXPECT_EQ(format(Variant::null(), u""), u"");
    EXPECT_EQ(format(Variant(), u"0"), u"");
    EXPECT_EQ(format(Variant::null(), u"dd/mm/yyyy"), u"");
}

TEST_F(Format, CopesWithQuotesThatAreNeverClosed) {
    EXPECT_EQ(format(5, u"0\"x"), u"5x");
    EXPECT_EQ(format(5, u"0\\"), u"5");
    EXPECT_EQ(format(5, u";"), u"");
}

TEST_F(Format, RefusesValuesWithoutText) {
    EXPECT_EQ(raisedBy([] { return format(Variant::missing(), u"0"); }), 13);
    EXPECT_EQ(raisedBy([] { return format(Ref<Object>(), u"0"); }), 91);
}

}  // namespace
}  // namespace kap::convert
