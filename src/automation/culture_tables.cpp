#include <array>

#include "automation/locale_tables.hpp"

// Countries by whose rules a value can be written and read when it says so. They are no choice for
// a program as a whole: what a program shows is in one of the locales of locale_tables.cpp.
namespace kap {
namespace {

using Months = std::array<std::u16string_view, 12>;
using Weekdays = std::array<std::u16string_view, 7>;

constexpr Months kGermanMonths{u"Januar",    u"Februar", u"März",     u"April",
                               u"Mai",       u"Juni",    u"Juli",     u"August",
                               u"September", u"Oktober", u"November", u"Dezember"};
constexpr Months kGermanShortMonths{u"Jan", u"Feb", u"Mrz", u"Apr", u"Mai", u"Jun",
                                    u"Jul", u"Aug", u"Sep", u"Okt", u"Nov", u"Dez"};
constexpr Weekdays kGermanDays{u"Sonntag",    u"Montag",  u"Dienstag", u"Mittwoch",
                               u"Donnerstag", u"Freitag", u"Samstag"};
constexpr Weekdays kGermanShortDays{u"So", u"Mo", u"Di", u"Mi", u"Do", u"Fr", u"Sa"};

constexpr Months kFrenchMonths{u"janvier",   u"février", u"mars",     u"avril",
                               u"mai",       u"juin",    u"juillet",  u"août",
                               u"septembre", u"octobre", u"novembre", u"décembre"};
constexpr Months kFrenchShortMonths{u"janv.", u"févr.", u"mars",  u"avr.", u"mai",  u"juin",
                                    u"juil.", u"août",  u"sept.", u"oct.", u"nov.", u"déc."};
constexpr Weekdays kFrenchDays{u"dimanche", u"lundi",    u"mardi", u"mercredi",
                               u"jeudi",    u"vendredi", u"samedi"};
constexpr Weekdays kFrenchShortDays{u"dim.", u"lun.", u"mar.", u"mer.", u"jeu.", u"ven.", u"sam."};

constexpr Months kSpanishMonths{u"enero",      u"febrero", u"marzo",     u"abril",
                                u"mayo",       u"junio",   u"julio",     u"agosto",
                                u"septiembre", u"octubre", u"noviembre", u"diciembre"};
constexpr Months kSpanishShortMonths{u"ene.", u"feb.", u"mar.", u"abr.", u"may.", u"jun.",
                                     u"jul.", u"ago.", u"sep.", u"oct.", u"nov.", u"dic."};
constexpr Weekdays kSpanishDays{u"domingo", u"lunes",   u"martes", u"miércoles",
                                u"jueves",  u"viernes", u"sábado"};
constexpr Weekdays kSpanishShortDays{u"do.", u"lu.", u"ma.", u"mi.", u"ju.", u"vi.", u"sá."};

constexpr Months kPortugueseMonths{u"janeiro",  u"fevereiro", u"março",    u"abril",
                                   u"maio",     u"junho",     u"julho",    u"agosto",
                                   u"setembro", u"outubro",   u"novembro", u"dezembro"};
constexpr Months kPortugueseShortMonths{u"jan", u"fev", u"mar", u"abr", u"mai", u"jun",
                                        u"jul", u"ago", u"set", u"out", u"nov", u"dez"};
constexpr Weekdays kPortugueseDays{u"domingo",      u"segunda-feira", u"terça-feira",
                                   u"quarta-feira", u"quinta-feira",  u"sexta-feira",
                                   u"sábado"};
constexpr Weekdays kPortugueseShortDays{u"dom", u"seg", u"ter", u"qua", u"qui", u"sex", u"sáb"};

constexpr Months kDutchMonths{u"januari",   u"februari", u"maart",    u"april",
                              u"mei",       u"juni",     u"juli",     u"augustus",
                              u"september", u"oktober",  u"november", u"december"};
constexpr Months kDutchShortMonths{u"jan", u"feb", u"mrt", u"apr", u"mei", u"jun",
                                   u"jul", u"aug", u"sep", u"okt", u"nov", u"dec"};
constexpr Weekdays kDutchDays{u"zondag",    u"maandag", u"dinsdag", u"woensdag",
                              u"donderdag", u"vrijdag", u"zaterdag"};
constexpr Weekdays kDutchShortDays{u"zo", u"ma", u"di", u"wo", u"do", u"vr", u"za"};

constexpr Months kSwedishMonths{u"januari",   u"februari", u"mars",     u"april",
                                u"maj",       u"juni",     u"juli",     u"augusti",
                                u"september", u"oktober",  u"november", u"december"};
constexpr Months kSwedishShortMonths{u"jan", u"feb", u"mar", u"apr", u"maj", u"jun",
                                     u"jul", u"aug", u"sep", u"okt", u"nov", u"dec"};
constexpr Weekdays kSwedishDays{u"söndag",  u"måndag", u"tisdag", u"onsdag",
                                u"torsdag", u"fredag", u"lördag"};
constexpr Weekdays kSwedishShortDays{u"sö", u"må", u"ti", u"on", u"to", u"fr", u"lö"};

constexpr Months kEnglishMonths{u"January",   u"February", u"March",    u"April",
                                u"May",       u"June",     u"July",     u"August",
                                u"September", u"October",  u"November", u"December"};
constexpr Months kEnglishShortMonths{u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                     u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
constexpr Weekdays kEnglishDays{u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                u"Thursday", u"Friday", u"Saturday"};
constexpr Weekdays kEnglishShortDays{u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};

constexpr Months kItalianMonths{u"gennaio",   u"febbraio", u"marzo",    u"aprile",
                                u"maggio",    u"giugno",   u"luglio",   u"agosto",
                                u"settembre", u"ottobre",  u"novembre", u"dicembre"};
constexpr Months kItalianShortMonths{u"gen", u"feb", u"mar", u"apr", u"mag", u"giu",
                                     u"lug", u"ago", u"set", u"ott", u"nov", u"dic"};
constexpr Weekdays kItalianDays{u"domenica", u"lunedì",  u"martedì", u"mercoledì",
                                u"giovedì",  u"venerdì", u"sabato"};
constexpr Weekdays kItalianShortDays{u"dom", u"lun", u"mar", u"mer", u"gio", u"ven", u"sab"};

constexpr char16_t kHardBlank = u'\u00A0';

// What the languages of one table have in common.
struct Language {
    Months months;
    Months monthAbbreviations;
    Weekdays weekdays;
    Weekdays weekdayAbbreviations;
};

constexpr Language kGerman{kGermanMonths, kGermanShortMonths, kGermanDays, kGermanShortDays};
constexpr Language kFrench{kFrenchMonths, kFrenchShortMonths, kFrenchDays, kFrenchShortDays};
constexpr Language kSpanish{kSpanishMonths, kSpanishShortMonths, kSpanishDays, kSpanishShortDays};
constexpr Language kPortuguese{kPortugueseMonths, kPortugueseShortMonths, kPortugueseDays,
                               kPortugueseShortDays};
constexpr Language kDutch{kDutchMonths, kDutchShortMonths, kDutchDays, kDutchShortDays};
constexpr Language kSwedish{kSwedishMonths, kSwedishShortMonths, kSwedishDays, kSwedishShortDays};
constexpr Language kEnglish{kEnglishMonths, kEnglishShortMonths, kEnglishDays, kEnglishShortDays};
constexpr Language kItalian{kItalianMonths, kItalianShortMonths, kItalianDays, kItalianShortDays};

struct Numbers {
    char16_t decimalSeparator;
    char16_t groupSeparator;
    std::u16string_view currencySign;
    std::u16string_view currencyFormat;
};

struct Dates {
    char16_t separator;
    DateOrder order;
    std::u16string_view shortDate;
    std::u16string_view longDate;
    std::u16string_view timeFormat = u"HH:mm:ss";
};

constexpr Locale culture(std::string_view name, const Numbers& numbers, const Dates& dates,
                         const Language& language) {
    return Locale{.name = name,
                  .decimalSeparator = numbers.decimalSeparator,
                  .groupSeparator = numbers.groupSeparator,
                  .dateSeparator = dates.separator,
                  .timeSeparator = u':',
                  .dateOrder = dates.order,
                  .shortDate = dates.shortDate,
                  .longDate = dates.longDate,
                  .timeFormat = dates.timeFormat,
                  .morning = u"AM",
                  .afternoon = u"PM",
                  .currencySign = numbers.currencySign,
                  .currencyFormat = numbers.currencyFormat,
                  .trueText = u"True",
                  .falseText = u"False",
                  .yesText = u"Yes",
                  .noText = u"No",
                  .onText = u"On",
                  .offText = u"Off",
                  .months = language.months,
                  .monthAbbreviations = language.monthAbbreviations,
                  .weekdays = language.weekdays,
                  .weekdayAbbreviations = language.weekdayAbbreviations};
}

constexpr Numbers kEuroBehind{u',', u'.', u"€", u"#,##0.00 €;-#,##0.00 €"};
constexpr DateOrder kDayFirst = DateOrder::DayMonthYear;
constexpr DateOrder kYearFirst = DateOrder::YearMonthDay;

// The first of a language stands for it.
constexpr std::array kCultures = {
    culture("de-DE", kEuroBehind, {u'.', kDayFirst, u"dd.MM.yyyy", u"dddd, d. MMMM yyyy"}, kGerman),
    culture("de-AT", {u',', u'.', u"€", u"€ #,##0.00;-€ #,##0.00"},
            {u'.', kDayFirst, u"dd.MM.yyyy", u"dddd, d. MMMM yyyy"}, kGerman),
    culture("de-CH", {u'.', u'\'', u"CHF", u"CHF #,##0.00;CHF-#,##0.00"},
            {u'.', kDayFirst, u"dd.MM.yyyy", u"dddd, d. MMMM yyyy"}, kGerman),
    culture("fr-FR", {u',', kHardBlank, u"€", u"#,##0.00 €;-#,##0.00 €"},
            {u'/', kDayFirst, u"dd/MM/yyyy", u"dddd d MMMM yyyy"}, kFrench),
    culture("fr-BE", {u',', u'.', u"€", u"#,##0.00 €;-#,##0.00 €"},
            {u'-', kDayFirst, u"dd-MM-yy", u"dddd d MMMM yyyy"}, kFrench),
    culture("fr-CA", {u',', kHardBlank, u"$", u"#,##0.00 $;(#,##0.00 $)"},
            {u'-', kYearFirst, u"yyyy-MM-dd", u"d MMMM yyyy"}, kFrench),
    culture("fr-CH", {u'.', u'\'', u"CHF", u"CHF #,##0.00;CHF-#,##0.00"},
            {u'.', kDayFirst, u"dd.MM.yyyy", u"dddd d MMMM yyyy"}, kFrench),
    culture("es-ES", kEuroBehind,
            {u'/', kDayFirst, u"dd/MM/yyyy", u"dddd, d 'de' MMMM 'de' yyyy", u"H:mm:ss"}, kSpanish),
    culture("pt-BR", {u',', u'.', u"R$", u"R$ #,##0.00;-R$ #,##0.00"},
            {u'/', kDayFirst, u"dd/MM/yyyy", u"dddd, d 'de' MMMM 'de' yyyy"}, kPortuguese),
    culture("nl-NL", {u',', u'.', u"€", u"€ #,##0.00;€ -#,##0.00"},
            {u'-', kDayFirst, u"d-M-yyyy", u"dddd d MMMM yyyy"}, kDutch),
    culture("sv-SE", {u',', kHardBlank, u"kr", u"#,##0.00 kr;-#,##0.00 kr"},
            {u'-', kYearFirst, u"yyyy-MM-dd", u"'den 'd MMMM yyyy"}, kSwedish),
    culture("en-CA", {u'.', u',', u"$", u"$#,##0.00;-$#,##0.00"},
            {u'-', kYearFirst, u"yyyy-MM-dd", u"MMMM d, yyyy", u"h:mm:ss tt"}, kEnglish),
    culture("en-AU", {u'.', u',', u"$", u"$#,##0.00;-$#,##0.00"},
            {u'/', kDayFirst, u"d/MM/yyyy", u"dddd, d MMMM yyyy", u"h:mm:ss tt"}, kEnglish),
    culture("en-IE", {u'.', u',', u"€", u"€#,##0.00;-€#,##0.00"},
            {u'/', kDayFirst, u"dd/MM/yyyy", u"dddd d MMMM yyyy"}, kEnglish),
    culture("it-CH", {u'.', u'\'', u"CHF", u"CHF #,##0.00;CHF-#,##0.00"},
            {u'.', kDayFirst, u"dd.MM.yyyy", u"dddd, d. MMMM yyyy"}, kItalian),
};

}  // namespace

std::span<const Locale> otherCultures() noexcept {
    return kCultures;
}

}  // namespace kap
