#pragma once

#include <array>
#include <string_view>

#include <kaputil/base/export.hpp>

namespace kap {

// The order in which a numeric date text is read and printed.
enum class DateOrder : unsigned char { DayMonthYear, MonthDayYear, YearMonthDay };

// What depends on the user's country when values turn into text and back. One constant table a
// locale; all of them are in src/automation/locale_tables.cpp.
struct Locale {
    std::string_view name;  // "it-IT"
    char16_t decimalSeparator;
    char16_t groupSeparator;
    char16_t dateSeparator;
    char16_t timeSeparator;
    DateOrder dateOrder;
    std::u16string_view shortDate;   // "dd/MM/yyyy": parts doubled when printed with two digits
    std::u16string_view longDate;    // "dddd d MMMM yyyy"
    std::u16string_view timeFormat;  // "HH:mm:ss"
    std::u16string_view morning;     // "AM", empty where it is not used
    std::u16string_view afternoon;
    std::u16string_view currencySign;
    std::u16string_view currencyFormat;  // positive and negative amounts, as a format
    std::u16string_view trueText;
    std::u16string_view falseText;
    std::u16string_view yesText;
    std::u16string_view noText;
    std::u16string_view onText;
    std::u16string_view offText;
    std::array<std::u16string_view, 12> months;
    std::array<std::u16string_view, 12> monthAbbreviations;
    std::array<std::u16string_view, 7> weekdays;  // from Sunday
    std::array<std::u16string_view, 7> weekdayAbbreviations;
};

// The locale of conversions on this thread: the one set with `setLocale`, else the one that the
// environment names (KAPUTIL_LOCALE, LC_ALL, LC_NUMERIC, LANG, the first that is known), else
// Italian.
[[nodiscard]] KAPUTIL_EXPORT const Locale& currentLocale();

// Sets this thread's locale ("it-IT", "it_IT.UTF-8", "en-US", "en-GB", or just the language).
// Raises 5 for a name that the library does not know.
KAPUTIL_EXPORT void setLocale(std::string_view name);

// Sets this thread's locale for as long as the object lives.
class KAPUTIL_EXPORT LocaleScope {
public:
    explicit LocaleScope(std::string_view name);
    ~LocaleScope();
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    const Locale* previous_;
};

}  // namespace kap
