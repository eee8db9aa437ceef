#include "automation/locale_tables.hpp"

#include <array>

namespace kap {
namespace {

constexpr std::array kLocales = {
    Locale{
        .name = "it-IT",
        .decimalSeparator = u',',
        .groupSeparator = u'.',
        .dateSeparator = u'/',
        .timeSeparator = u':',
        .dateOrder = DateOrder::DayMonthYear,
        .shortDate = u"dd/MM/yyyy",
        .longDate = u"dddd d MMMM yyyy",
        .timeFormat = u"HH:mm:ss",
        .morning = u"AM",
        .afternoon = u"PM",
        .currencySign = u"€",
        .currencyFormat = u"#,##0.00 €;-#,##0.00 €",
        .trueText = u"Vero",
        .falseText = u"Falso",
        .yesText = u"Sì",
        .noText = u"No",
        .onText = u"On",
        .offText = u"Off",
        .months = {u"gennaio", u"febbraio", u"marzo", u"aprile", u"maggio", u"giugno", u"luglio",
                   u"agosto", u"settembre", u"ottobre", u"novembre", u"dicembre"},
        .monthAbbreviations = {u"gen", u"feb", u"mar", u"apr", u"mag", u"giu", u"lug", u"ago",
                               u"set", u"ott", u"nov", u"dic"},
        .weekdays = {u"domenica", u"lunedì", u"martedì", u"mercoledì", u"giovedì", u"venerdì",
                     u"sabato"},
        .weekdayAbbreviations = {u"dom", u"lun", u"mar", u"mer", u"gio", u"ven", u"sab"},
    },
    Locale{
        .name = "en-US",
        .decimalSeparator = u'.',
        .groupSeparator = u',',
        .dateSeparator = u'/',
        .timeSeparator = u':',
        .dateOrder = DateOrder::MonthDayYear,
        .shortDate = u"M/d/yyyy",
        .longDate = u"dddd, MMMM d, yyyy",
        .timeFormat = u"h:mm:ss tt",
        .morning = u"AM",
        .afternoon = u"PM",
        .currencySign = u"$",
        .currencyFormat = u"$#,##0.00;($#,##0.00)",
        .trueText = u"True",
        .falseText = u"False",
        .yesText = u"Yes",
        .noText = u"No",
        .onText = u"On",
        .offText = u"Off",
        .months = {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August",
                   u"September", u"October", u"November", u"December"},
        .monthAbbreviations = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug",
                               u"Sep", u"Oct", u"Nov", u"Dec"},
        .weekdays = {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday",
                     u"Saturday"},
        .weekdayAbbreviations = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"},
    },
    Locale{
        .name = "en-GB",
        .decimalSeparator = u'.',
        .groupSeparator = u',',
        .dateSeparator = u'/',
        .timeSeparator = u':',
        .dateOrder = DateOrder::DayMonthYear,
        .shortDate = u"dd/MM/yyyy",
        .longDate = u"dddd, d MMMM yyyy",
        .timeFormat = u"HH:mm:ss",
        .morning = u"am",
        .afternoon = u"pm",
        .currencySign = u"£",
        .currencyFormat = u"£#,##0.00;-£#,##0.00",
        .trueText = u"True",
        .falseText = u"False",
        .yesText = u"Yes",
        .noText = u"No",
        .onText = u"On",
        .offText = u"Off",
        .months = {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August",
                   u"September", u"October", u"November", u"December"},
        .monthAbbreviations = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug",
                               u"Sept", u"Oct", u"Nov", u"Dec"},
        .weekdays = {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday",
                     u"Saturday"},
        .weekdayAbbreviations = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"},
    },
};

}  // namespace

std::span<const Locale> knownLocales() noexcept {
    return kLocales;
}

}  // namespace kap
