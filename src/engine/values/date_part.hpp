#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/values/dates.hpp"

namespace kap::engine {

// The parts that DATEPART, DATENAME, DATEADD and DATEDIFF name.
enum class DatePart {
    Year,
    Quarter,
    Month,
    DayOfYear,
    Day,
    Week,
    WeekDay,
    Hour,
    Minute,
    Second,
    Millisecond,
    Microsecond,
    Nanosecond,
    TimeZone,  // the offset from universal time
    IsoWeek
};

// A part by one of its names ("year", "yy", "yyyy"...), case ignored; nullopt for anything else.
[[nodiscard]] std::optional<DatePart> datePartNamed(std::string_view name);

// The value of a part: weeks are counted from 1 January and start on Sunday, Sunday is day 1 of
// the week. The weeks of IsoWeek begin on Monday, and the first has the year's first Thursday.
[[nodiscard]] int partOf(DatePart part, double stored);
// The same of a date in parts, with its day counted from 30 December 1899. It has no offset.
[[nodiscard]] int partOf(DatePart part, const DateParts& parts, int day);

// The name of a part's value, as DATENAME gives it: that of the month or weekday, or the digits.
[[nodiscard]] std::string nameOfPart(DatePart part, int value);

// The instant so many parts later; the day of the month is kept or becomes the last. nullopt
// beyond year 9999, and for parts that no date can be moved by: those below the millisecond, the
// zone and the week of the ISO year.
[[nodiscard]] std::optional<double> movedBy(DatePart part, std::int64_t count, double stored);

// How many boundaries of the part lie between two instants: 31 December to 1 January is one year.
[[nodiscard]] std::int64_t boundariesBetween(DatePart part, double from, double to);

}  // namespace kap::engine
