#include "engine/values/date_part.hpp"

#include <algorithm>
#include <cmath>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/calendar.hpp"
#include "base/ascii.hpp"
#include "engine/values/date_settings.hpp"
#include "engine/values/dates.hpp"

namespace kap::engine {

namespace {

constexpr int kDaysPerWeek = 7;
// The stored day 1 (31 December 1899) was a Sunday.
constexpr int kDayOfFirstSunday = 1;

int dayNumber(double stored) {
    return static_cast<int>(std::floor(fromTicks(ticksOf(stored))));
}

int floorDivide(int value, int divisor) {
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

// 0 is Sunday.
int dayOfWeek(int day) {
    return ((day - kDayOfFirstSunday) % kDaysPerWeek + kDaysPerWeek) % kDaysPerWeek;
}

// The place of a day in the week, from 0, by the session's first day.
int placeInWeek(int day) {
    return (dayOfWeek(day) - dateSettings().firstDay + 2 * kDaysPerWeek) % kDaysPerWeek;
}

std::optional<double> movedByMonths(std::int64_t months, double stored) {
    constexpr std::int64_t kMostMonths = 120000;
    if (months < -kMostMonths || months > kMostMonths) return std::nullopt;
    DateParts parts = partsOf(stored);
    const int month = parts.year * 12 + parts.month - 1 + static_cast<int>(months);
    parts.year = month / 12;
    parts.month = month % 12 + 1;
    if (month < 0 || parts.year < convert::kFirstYear || parts.year > convert::kLastYear) {
        return std::nullopt;
    }
    parts.day = std::min(parts.day, convert::daysInMonth(parts.year, parts.month));
    return instantOf(parts);
}

std::optional<double> movedByTicks(std::int64_t count, std::int64_t ticksEach, double stored) {
    std::int64_t ticks = 0;
    if (__builtin_mul_overflow(count, ticksEach, &ticks) ||
        __builtin_add_overflow(ticks, ticksOf(stored), &ticks)) {
        return std::nullopt;
    }
    return fromTicks(ticks);
}

std::int64_t monthNumber(double stored) {
    const DateParts parts = partsOf(stored);
    return std::int64_t{parts.year} * 12 + parts.month - 1;
}

std::int64_t floorTicks(double stored, std::int64_t ticksEach) {
    const std::int64_t ticks = ticksOf(stored);
    const std::int64_t quotient = ticks / ticksEach;
    return ticks % ticksEach < 0 ? quotient - 1 : quotient;
}

std::int64_t millisecondsBetween(double from, double to) {
    return (ticksOf(to) - ticksOf(from)) * 10 / 3;
}

// Kept within 64 bits; a count as large as that is none that anybody is told.
std::int64_t finer(std::int64_t milliseconds, std::int64_t each) {
    constexpr std::int64_t kMost = 1000000000000;
    return std::clamp(milliseconds, -kMost, kMost) * each;
}

constexpr std::int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr std::int64_t kTicksPerHour = 60 * kTicksPerMinute;

}  // namespace

std::optional<DatePart> datePartNamed(std::string_view name) {
    struct Entry {
        std::string_view name;
        DatePart part;
    };
    static constexpr Entry kNames[] = {
        {"year", DatePart::Year},
        {"yy", DatePart::Year},
        {"yyyy", DatePart::Year},
        {"quarter", DatePart::Quarter},
        {"qq", DatePart::Quarter},
        {"q", DatePart::Quarter},
        {"month", DatePart::Month},
        {"mm", DatePart::Month},
        {"m", DatePart::Month},
        {"dayofyear", DatePart::DayOfYear},
        {"dy", DatePart::DayOfYear},
        {"y", DatePart::DayOfYear},
        {"day", DatePart::Day},
        {"dd", DatePart::Day},
        {"d", DatePart::Day},
        {"week", DatePart::Week},
        {"wk", DatePart::Week},
        {"ww", DatePart::Week},
        {"weekday", DatePart::WeekDay},
        {"dw", DatePart::WeekDay},
        {"w", DatePart::WeekDay},
        {"hour", DatePart::Hour},
        {"hh", DatePart::Hour},
        {"minute", DatePart::Minute},
        {"mi", DatePart::Minute},
        {"n", DatePart::Minute},
        {"second", DatePart::Second},
        {"ss", DatePart::Second},
        {"s", DatePart::Second},
        {"millisecond", DatePart::Millisecond},
        {"ms", DatePart::Millisecond},
        {"iso_week", DatePart::IsoWeek},
        {"isowk", DatePart::IsoWeek},
        {"isoww", DatePart::IsoWeek},
        {"microsecond", DatePart::Microsecond},
        {"mcs", DatePart::Microsecond},
        {"nanosecond", DatePart::Nanosecond},
        {"ns", DatePart::Nanosecond},
        {"tzoffset", DatePart::TimeZone},
        {"tz", DatePart::TimeZone},
    };
    const auto* found = std::find_if(std::begin(kNames), std::end(kNames), [&](const Entry& entry) {
        return equalsIgnoringCase(entry.name, name);
    });
    if (found == std::end(kNames)) return std::nullopt;
    return found->part;
}

int partOf(DatePart part, double stored) {
    return partOf(part, partsOf(stored), dayNumber(stored));
}

int partOf(DatePart part, const DateParts& parts, int day) {
    const int newYear = convert::serialDay({parts.year, 1, 1});
    switch (part) {
        case DatePart::Year:
            return parts.year;
        case DatePart::Quarter:
            return (parts.month + 2) / 3;
        case DatePart::Month:
            return parts.month;
        case DatePart::DayOfYear:
            return day - newYear + 1;
        case DatePart::Day:
            return parts.day;
        case DatePart::Week:
            return (day - newYear + placeInWeek(newYear)) / kDaysPerWeek + 1;
        case DatePart::WeekDay:
            return placeInWeek(day) + 1;
        case DatePart::Hour:
            return parts.hour;
        case DatePart::Minute:
            return parts.minute;
        case DatePart::Second:
            return parts.second;
        case DatePart::Millisecond:
            return parts.fraction / kFractionsPerMillisecond;
        case DatePart::Microsecond:
            return parts.fraction / 10;
        case DatePart::Nanosecond:
            return parts.fraction * 100;
        case DatePart::TimeZone:
            return 0;
        case DatePart::IsoWeek: {
            // The week has the year of its Thursday.
            constexpr int kFromMondayToThursday = 3;
            const int afterMonday =
                (day - kDayOfFirstSunday + kDaysPerWeek * 100000 - 1) % kDaysPerWeek;
            const int thursday = day - afterMonday + kFromMondayToThursday;
            const int year = partsOf(thursday).year;
            return (thursday - convert::serialDay({year, 1, 1})) / kDaysPerWeek + 1;
        }
    }
    return 0;
}

std::string nameOfPart(DatePart part, int value) {
    const bool italian = dateSettings().italian;
    if (part == DatePart::Month) return monthName(value, italian);
    if (part != DatePart::WeekDay) return plain::text(value);
    return dayName((value - 1 + dateSettings().firstDay) % kDaysPerWeek, italian);
}

std::optional<double> movedBy(DatePart part, std::int64_t count, double stored) {
    constexpr std::int64_t kMost = 1000000000000000;
    count = std::clamp(count, -kMost, kMost);
    switch (part) {
        case DatePart::Year:
            return movedByMonths(count * 12, stored);
        case DatePart::Quarter:
            return movedByMonths(count * 3, stored);
        case DatePart::Month:
            return movedByMonths(count, stored);
        case DatePart::DayOfYear:
        case DatePart::WeekDay:
        case DatePart::Day:
            return movedByTicks(count, kTicksPerDay, stored);
        case DatePart::Week:
            return movedByTicks(count, kDaysPerWeek * kTicksPerDay, stored);
        case DatePart::Hour:
            return movedByTicks(count, kTicksPerHour, stored);
        case DatePart::Minute:
            return movedByTicks(count, kTicksPerMinute, stored);
        case DatePart::Second:
            return movedByTicks(count, kTicksPerSecond, stored);
        case DatePart::Millisecond: {
            // Three tenths of a tick each, rounded to the nearest tick.
            const std::int64_t tenths = count * 3;
            return movedByTicks((tenths + (tenths >= 0 ? 5 : -5)) / 10, 1, stored);
        }
        case DatePart::IsoWeek:
        case DatePart::Microsecond:
        case DatePart::Nanosecond:
        case DatePart::TimeZone:
            break;
    }
    return std::nullopt;
}

std::int64_t boundariesBetween(DatePart part, double from, double to) {
    switch (part) {
        case DatePart::Year:
            return partsOf(to).year - partsOf(from).year;
        case DatePart::Quarter:
            return monthNumber(to) / 3 - monthNumber(from) / 3;
        case DatePart::Month:
            return monthNumber(to) - monthNumber(from);
        case DatePart::DayOfYear:
        case DatePart::WeekDay:
        case DatePart::Day:
            return dayNumber(to) - dayNumber(from);
        case DatePart::Week:
            return floorDivide(dayNumber(to) - kDayOfFirstSunday, kDaysPerWeek) -
                   floorDivide(dayNumber(from) - kDayOfFirstSunday, kDaysPerWeek);
        case DatePart::Hour:
            return floorTicks(to, kTicksPerHour) - floorTicks(from, kTicksPerHour);
        case DatePart::Minute:
            return floorTicks(to, kTicksPerMinute) - floorTicks(from, kTicksPerMinute);
        case DatePart::Second:
            return floorTicks(to, kTicksPerSecond) - floorTicks(from, kTicksPerSecond);
        case DatePart::Millisecond:
            return millisecondsBetween(from, to);
        case DatePart::Microsecond:
            return finer(millisecondsBetween(from, to), 1000);
        case DatePart::Nanosecond:
            return finer(millisecondsBetween(from, to), 1000000);
        case DatePart::IsoWeek:
        case DatePart::TimeZone:
            break;
    }
    return 0;
}

}  // namespace kap::engine
