#include <kaputil/util/dates.hpp>

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>

#include "automation/clock.hpp"
#include "automation/convert/calendar.hpp"
#include "support/shown.hpp"

namespace kap::util {
namespace {

using test::raisedBy;
using test::shown;

class Dates : public testing::Test {
    LocaleScope italian_{"it-IT"};
};

std::string thisYear() {
    return std::to_string(convert::takeApart(localNow())->date.year);
}

TEST_F(Dates, NamesMonthsInThreeLanguages) {
    const char16_t* italian[] = {u"Gennaio",   u"Febbraio", u"Marzo",    u"Aprile",
                                 u"Maggio",    u"Giugno",   u"Luglio",   u"Agosto",
                                 u"Settembre", u"Ottobre",  u"Novembre", u"Dicembre"};
    const char16_t* english[] = {u"January",   u"February", u"March",    u"April",
                                 u"May",       u"June",     u"July",     u"August",
                                 u"September", u"October",  u"November", u"December"};
    const char16_t* french[] = {u"Janvier",   u"Février", u"Mars",     u"Avril",
                                u"Mai",       u"Juin",    u"Juillet",  u"Août",
                                u"Septembre", u"Octobre", u"Novembre", u"Décembre"};
    for (std::int16_t month = 1; month <= 12; ++month) {
        EXPECT_EQ(NomeMese(month, u"ITA"), italian[month - 1]);
        EXPECT_EQ(NomeMese(month), english[month - 1]);
        EXPECT_EQ(NomeMese(month, u"FRA"), french[month - 1]);
    }
}

TEST_F(Dates, NamesMonthsInEnglishForAnyOtherCode) {
    EXPECT_EQ(NomeMese(8, u"DEU"), u"August");
    EXPECT_EQ(NomeMese(8, u""), u"August");
    EXPECT_EQ(NomeMese(8, u"fra"), u"Août");
    EXPECT_EQ(NomeMese(8, u"Ita"), u"Agosto");
}

TEST_F(Dates, NamesNoMonthOutsideTheYear) {
    EXPECT_EQ(NomeMese(0), u"");
    EXPECT_EQ(NomeMese(13, u"ITA"), u"");
    EXPECT_EQ(NomeMese(-1), u"");
}

TEST_F(Dates, WritesDatesOutWithABlankAtTheEnd) {
    EXPECT_EQ(shown(ConvertiData(u"01/02/2003", u"ITA")), "String 1 Febbraio 2003 ");
    EXPECT_EQ(shown(ConvertiData(u"5/3/2003")), "String 5 March 2003 ");
    EXPECT_EQ(shown(ConvertiData(u"05/03/2003", u"ita")), "String 5 Marzo 2003 ");
    EXPECT_EQ(shown(ConvertiData(u"2003-12-25 10:30", u"FRA")), "String 25 Décembre 2003 ");
}

TEST_F(Dates, WritesAYearWithFourDigits) {
    EXPECT_EQ(shown(ConvertiData(u"05/03/0500", u"ITA")), "String 5 Marzo 0500 ");
    EXPECT_EQ(shown(ConvertiData(u"31/12/9999", u"ITA")), "String 31 Dicembre 9999 ");
}

TEST_F(Dates, RefusesToWriteOutWhatIsNoDate) {
    EXPECT_EQ(raisedBy([] { return ConvertiData(u"31/02/2003"); }), 13);
    EXPECT_EQ(raisedBy([] { return ConvertiData(u""); }), 13);
    EXPECT_EQ(raisedBy([] { return ConvertiData(u"domani"); }), 13);
}

TEST_F(Dates, ChecksTypedDates) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"25122003", u"25/12/2003"},     {u"25/12/2003", u"25/12/2003"},
        {u"1/2/03", u"01/02/2003"},       {u"010270", u"01/02/2070"},
        {u"010271", u"01/02/1971"},       {u"251203", u"25/12/2003"},
        {u"  25/12/2003", u"25/12/2003"}, {u"25 dicembre 2003", u"25/12/2003"},
        {u"01/01/1753", u"01/01/1753"},   {u"29/02/2004", u"29/02/2004"},
    };
    for (const auto& [typed, expected] : cases) {
        EXPECT_EQ(kapControllaData(typed), expected) << String(typed).utf8();
    }
}

TEST_F(Dates, CompletesATypedDateWithTheCurrentYear) {
    EXPECT_EQ(kapControllaData(u"25/12").utf8(), "25/12/" + thisYear());
    EXPECT_EQ(kapControllaData(u"2512").utf8(), "25/12/" + thisYear());
}

TEST_F(Dates, EmptiesTypedDatesThatAreNone) {
    for (const char16_t* typed : {u"", u"   ", u"31/02/2003", u"32122003", u"25/13/2103/1", u"abc",
                                  u"31/12/1752", u"29/02/2003", u"31121752", u"99", u"/", u"//"}) {
        EXPECT_EQ(kapControllaData(typed), u"") << String(typed).utf8();
    }
    EXPECT_EQ(kapControllaData(Variant::null()), u"");
    EXPECT_EQ(kapControllaData(Variant()), u"");
}

TEST_F(Dates, WritesACheckedDateByTheGivenFormat) {
    String format = u"yyyymmdd";
    EXPECT_EQ(kapControllaData(u"25/12/2003", format), u"20031225");
    EXPECT_EQ(format, u"yyyymmdd");
    EXPECT_EQ(kapControllaData(Date{37980}, u"d mmmm yyyy"), u"25 dicembre 2003");
}

TEST_F(Dates, WritesNothingForNoDateUnderAnyFormat) {
    for (const char16_t* format :
         {u"\"del\" dd/mm/yyyy", u"\"x\"", u"@@@@", u"&&", u"!@@", u">@", u"0.00", u"Fixed",
          u"Yes/No", u"Short Date", u"yyyy", u"@;vuoto"}) {
        for (const char16_t* typed : {u"", u"  ", u"31/02/2003", u"31/12/1752"}) {
            EXPECT_EQ(kapControllaData(typed, format), u"") << String(format).utf8();
        }
        EXPECT_EQ(kapControllaData(Variant::null(), format), u"") << String(format).utf8();
    }
}

TEST_F(Dates, WritesTheUsualFormatBackWhereNoneIsGiven) {
    String format;
    EXPECT_EQ(kapControllaData(u"251203", format), u"25/12/2003");
    EXPECT_EQ(format, u"dd/mm/yyyy");
    String blank;
    EXPECT_EQ(kapControllaData(u"  ", blank), u"");
    EXPECT_EQ(blank, u"dd/mm/yyyy");
}

TEST_F(Dates, ChecksTypedDatesInTheUsersOrder) {
    const LocaleScope american("en-US");
    EXPECT_EQ(kapControllaData(u"12/25/2003", u"yyyy-mm-dd"), u"2003-12-25");
    EXPECT_EQ(kapControllaData(u"02/01/2003", u"yyyy-mm-dd"), u"2003-02-01");
    EXPECT_EQ(kapControllaData(u"01022003", u"yyyy-mm-dd"), u"2003-02-01");
}

TEST_F(Dates, RefusesValuesWithoutText) {
    EXPECT_EQ(raisedBy([] { return kapControllaData(Variant::missing()); }), 13);
}

}  // namespace
}  // namespace kap::util
