#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/values/date_part.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/value.hpp"

// Dates and times to 100 nanoseconds: time, datetime2 and datetimeoffset, and what the other dates
// are as one of them.
namespace kap::engine {

inline constexpr std::int64_t kFractionsPerDay = std::int64_t{86400} * kFractionsPerSecond;

// A date and time on the clock of a place.
struct Instant {
    std::int64_t ticks = 0;  // of 100 nanoseconds since the midnight that began 1 January of year 1
    int offset = 0;          // minutes that the clock is ahead of universal time

    [[nodiscard]] std::int64_t universal() const;
    // The same instant on a clock so many minutes ahead.
    [[nodiscard]] Instant onClock(int minutes) const;
};

// A value of any date type, which is not Null. A time is one of 1 January 1900.
[[nodiscard]] Instant instantFrom(const Value& value, const tsql::TypeSpec& type);

// The instant as a value of another date type, rounded to its decimals. Throws error 242 beyond its
// range, in which `from` is named.
[[nodiscard]] Value fitInstant(const Instant& instant, const tsql::TypeSpec& from,
                               const tsql::TypeSpec& to);

// Reads a text as the type says; error 241.
[[nodiscard]] Value fineDateFromText(const std::string& text, const tsql::TypeSpec& to, int style);

// The text in a style of CONVERT; nullopt for one that is not known.
[[nodiscard]] std::optional<std::string> fineDateToText(const Value& value,
                                                        const tsql::TypeSpec& type, int style);

[[nodiscard]] DateParts partsOf(const Instant& instant);
// nullopt for parts that no date has.
[[nodiscard]] std::optional<Instant> instantOf(const DateParts& parts, int offset);
// Days from 30 December 1899.
[[nodiscard]] int dayOf(const Instant& instant);

[[nodiscard]] int partOf(DatePart part, const Instant& instant);

// Whether the instant is within the years 1 to 9999, by its clock and in universal time.
[[nodiscard]] bool isOnCalendar(const Instant& instant);

// A count of parts of the time as one that moves no further than a day.
[[nodiscard]] std::int64_t withinDay(DatePart part, std::int64_t count);

// So many parts later, by the clock; nullopt beyond the years 1 to 9999, and for parts that no date
// can be moved by.
[[nodiscard]] std::optional<Instant> movedBy(DatePart part, std::int64_t count,
                                             const Instant& instant);

// The boundaries of the part that lie between two instants in universal time; nullopt when there
// are more than 64 bits count.
[[nodiscard]] std::optional<std::int64_t> boundariesBetween(DatePart part, const Instant& from,
                                                            const Instant& to);

// Whether a clock may be so many minutes ahead of universal time.
[[nodiscard]] bool isOffset(std::int64_t minutes);

}  // namespace kap::engine
