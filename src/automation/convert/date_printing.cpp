#include <algorithm>
#include <array>
#include <cmath>

#include "automation/convert/calendar.hpp"
#include "automation/convert/date_text.hpp"

namespace kap::convert {
namespace {

void appendPadded(std::u16string& out, int value, std::size_t width) {
    std::array<char16_t, 8> digits{};  // years have four, all else fewer
    auto first = digits.end();
    do {
        *--first = static_cast<char16_t>(u'0' + value % 10);
        value /= 10;
    } while (value > 0 || static_cast<std::size_t>(digits.end() - first) < width);
    out.append(first, digits.end());
}

void appendDay(std::u16string& out, std::size_t width, CivilDate date, const Locale& locale) {
    if (width <= 2) {
        return appendPadded(out, date.day, width);
    }
    const auto weekday = static_cast<std::size_t>(weekdayOf(date));
    out += width == 3 ? locale.weekdayAbbreviations[weekday] : locale.weekdays[weekday];
}

void appendMonth(std::u16string& out, std::size_t width, CivilDate date, const Locale& locale) {
    if (width <= 2) {
        return appendPadded(out, date.month, width);
    }
    const auto month = static_cast<std::size_t>(date.month) - 1;
    out += width == 3 ? locale.monthAbbreviations[month] : locale.months[month];
}

void appendField(std::u16string& out, char16_t letter, std::size_t width, const CivilTime& when,
                 const Locale& locale) {
    const int hour = when.time.hour;
    switch (letter) {
        case u'd':
            return appendDay(out, width, when.date, locale);
        case u'M':
            return appendMonth(out, width, when.date, locale);
        case u'y':
            return appendPadded(out, width > 2 ? when.date.year : when.date.year % 100,
                                std::min<std::size_t>(width, 2));
        case u'H':
            return appendPadded(out, hour, width);
        case u'h':
            return appendPadded(out, hour % 12 == 0 ? 12 : hour % 12, width);
        case u'm':
            return appendPadded(out, when.time.minute, width);
        case u's':
            return appendPadded(out, when.time.second, width);
        case u't':
            out += hour < 12 ? locale.morning : locale.afternoon;
            return;
        case u'/':
            out.append(width, locale.dateSeparator);
            return;
        case u':':
            out.append(width, locale.timeSeparator);
            return;
        default:
            out.append(width, letter);
    }
}

}  // namespace

void appendPattern(std::u16string& out, std::u16string_view pattern, const CivilTime& when,
                   const Locale& locale) {
    for (std::size_t i = 0; i < pattern.size();) {
        const std::size_t next = std::min(pattern.find_first_not_of(pattern[i], i), pattern.size());
        appendField(out, pattern[i], next - i, when, locale);
        i = next;
    }
}

std::optional<std::u16string> printDate(Date date, const Locale& locale) {
    const auto when = takeApart(date);
    if (!when) {
        return std::nullopt;
    }
    // What the number holds decides, not what rounding to the second leaves of it: a second before
    // midnight of a day prints that midnight.
    const bool hasDate = std::trunc(date.days) != 0;
    const bool hasTime = date.days != std::trunc(date.days);
    std::u16string out;
    if (hasDate) {
        appendPattern(out, locale.shortDate, *when, locale);
    }
    if (hasDate && hasTime) {
        out.push_back(u' ');
    }
    if (hasTime || !hasDate) {
        appendPattern(out, locale.timeFormat, *when, locale);
    }
    return out;
}

}  // namespace kap::convert
