#include <gtest/gtest.h>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>

#include "support/shown.hpp"

namespace kap::convert {
namespace {

using test::raisedBy;
using test::shown;

class DateConversion : public testing::Test {
private:
    LocaleScope italian_{"it-IT"};
};

constexpr double kChristmas2003 = 37980;

TEST_F(DateConversion, ReadsDatesAsItaliansWriteThem) {
    const std::pair<const char*, double> cases[] = {
        {"25/12/2003", kChristmas2003},
        {"25-12-2003", kChristmas2003},
        {"giovedì 25 dicembre 2003", kChristmas2003},
        {"25/12/03", kChristmas2003},
        {" 25/12/2003 ", kChristmas2003},
        {"2003-12-25", kChristmas2003},
        {"2003/12/25", kChristmas2003},
        {"25 dicembre 2003", kChristmas2003},
        {"25-dic-2003", kChristmas2003},
        {"12/25/2003", kChristmas2003},
        {"25/12/2003 06:00", kChristmas2003 + 0.25},
        {"25/12/2003 18:00:00", kChristmas2003 + 0.75},
        {"2003-12-25 06:00:00", kChristmas2003 + 0.25},
        {"06.00 25/12/2003", kChristmas2003 + 0.25},
        {"6:00", 0.25},
        {"6:00 PM", 0.75},
        {"29/12/1899 6:00", -1.25},
        {"01/02/2003", 37653},
        {"6 PM", 0.75},
        {"31/12/49", 54788},
        {"01/01/50", 18264},
        {"1/2003", 37622},
        {"30/02/04", 47518},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_TRUE(isDate(Variant(text))) << text;
        if (isDate(Variant(text))) {
            EXPECT_EQ(toDate(Variant(text)).days, expected) << text;
        }
    }
}

TEST_F(DateConversion, ReadsTheMonthFirstForAmericans) {
    const LocaleScope american("en-US");
    EXPECT_EQ(toDate(u"12/25/2003").days, kChristmas2003);
    EXPECT_EQ(toDate(u"2/1/2003").days, 37653);
    EXPECT_EQ(toDate(u"25/12/2003").days, kChristmas2003);
    EXPECT_EQ(toDate(u"25 December 2003").days, kChristmas2003);
}

TEST_F(DateConversion, RefusesTextsThatAreNoDate) {
    for (const char* text :
         {"", "abc", "31/02/2003", "32/12/2003", "25/13/32", "12", "25/12/", "25:61", "24:00",
          "25/12/2003 x", "1/2/3/4", "25///12", "12345/1/1", "25.12.2003", "37980", "37980,5",
          "2003-12-25T06:00", "10 1:30 12", "Vero"}) {
        EXPECT_FALSE(isDate(Variant(text))) << text;
    }
    EXPECT_EQ(raisedBy([] { return toDate(u"abc"); }), 13);
}

TEST_F(DateConversion, PrintsDatesAsItaliansWriteThem) {
    const std::pair<double, const char*> cases[] = {
        {kChristmas2003, "25/12/2003"},
        {kChristmas2003 + 0.25, "25/12/2003 06:00:00"},
        {kChristmas2003 + 0.75, "25/12/2003 18:00:00"},
        {0.75, "18:00:00"},
        {0, "00:00:00"},
        {-1, "29/12/1899"},
        {-1.25, "29/12/1899 06:00:00"},
        {37653, "01/02/2003"},
    };
    for (const auto& [days, expected] : cases) {
        EXPECT_EQ(toString(Date{days}).utf8(), expected);
    }
}

TEST_F(DateConversion, PrintsDatesAsAmericansWriteThem) {
    const LocaleScope american("en-US");
    EXPECT_EQ(toString(Date{37653}), u"2/1/2003");
    EXPECT_EQ(toString(Date{37653.75}), u"2/1/2003 6:00:00 PM");
    EXPECT_EQ(toString(Date{0}), u"12:00:00 AM");
}

TEST_F(DateConversion, ReadsBackEveryDateThatItPrints) {
    for (const char* name : {"it-IT", "en-US", "en-GB"}) {
        const LocaleScope scope(name);
        for (int day = -657434 + 11322; day <= 2958465; day += 10007) {
            const Date date{static_cast<double>(day)};
            ASSERT_EQ(toDate(toString(date)), date) << name << ' ' << day;
        }
    }
}

// A blank behind a date changes nothing but how it is read.
TEST_F(DateConversion, ReadsPlainDatesAsWithABlankBehindThem) {
    for (const char* name : {"it-IT", "en-US", "en-GB"}) {
        const LocaleScope scope(name);
        for (const char* text :
             {"1/2/2003",  "01-02-2003", "2003/2/1", "13/12/03",   "12-13-03",  "31/4/2003",
              "0/1/2003",  "1/2/49",     "1/2/50",   "1/2/99999",  "1/2/12345", "00001/2/2003",
              "1/2",       "1/2/",       "/1/2",     "1//2",       "1/2/3/4",   "1-2/2003",
              "29/2/2004", "29/2/2003",  "1.2.2003", "9999/12/31", "12:30",     "1/2/2003x",
              "",          "1"}) {
            const Variant plain(text);
            const Variant withBlank(std::string(text) + " ");
            ASSERT_EQ(isDate(plain), isDate(withBlank)) << name << ' ' << text;
            if (isDate(plain)) {
                EXPECT_EQ(toDate(plain), toDate(withBlank)) << name << ' ' << text;
            }
        }
    }
}

TEST_F(DateConversion, TakesANumberAsDays) {
    EXPECT_EQ(toDate(37980).days, kChristmas2003);
    EXPECT_EQ(toDate(37980.5).days, kChristmas2003 + 0.5);
    EXPECT_EQ(toDate(Variant()).days, 0);
    EXPECT_EQ(toDouble(Date{kChristmas2003}), kChristmas2003);
    EXPECT_EQ(toLong(Date{kChristmas2003}), 37980);
}

TEST_F(DateConversion, RefusesDatesOutsideTheirRange) {
    EXPECT_EQ(raisedBy([] { return toDate(2958466); }), 6);
    EXPECT_EQ(raisedBy([] { return toDate(-657435); }), 6);
    EXPECT_EQ(raisedBy([] { return toDate(Variant::null()); }), 94);
}

TEST_F(DateConversion, TestsWhatIsADate) {
    EXPECT_TRUE(isDate(Date{0}));
    EXPECT_FALSE(isDate(37980));
    EXPECT_FALSE(isDate(Variant()));
    EXPECT_FALSE(isDate(Variant::null()));
    EXPECT_FALSE(isDate(Ref<Object>()));
}

}  // namespace
}  // namespace kap::convert
