#pragma once

#include <optional>

#include "engine/values/dates.hpp"

// The Hijri calendar of the styles 130 and 131, as the server counts it: twelve months of thirty
// and twenty-nine days in turn, and in eleven of thirty years one day more in the last. It begins
// on 18 July 622.
namespace kap::engine {

// Whether a style of CONVERT is of this calendar.
[[nodiscard]] constexpr bool isHijriStyle(int style) {
    return style == 130 || style == 131;
}

// The parts with year, month and day of the other calendar; nullopt for a day before the first, and
// for one that the calendar does not have or that lies behind the year 9999.
[[nodiscard]] std::optional<DateParts> hijriOf(const DateParts& gregorian);
[[nodiscard]] std::optional<DateParts> gregorianOf(const DateParts& hijri);

// The name of a month from 1, in Arabic.
[[nodiscard]] const char* hijriMonthName(int month);

}  // namespace kap::engine
