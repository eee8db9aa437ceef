#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/variant.hpp>

#include "automation/convert/calendar.hpp"

// Dates and times as people write them, under a locale.
namespace kap::convert {

// Reads a whole text as a date, a time, or both, in either order.
//
// A date is two or three parts with blanks, commas, '/' or '-' between them; a month may be named
// and a weekday stand anywhere. The parts are read in the locale's order and, where that gives no
// date, as year-month-day, day-month-year, month-day-year or year-day-month; two parts are a day of
// this year or a month. Years 0 to 49 are 2000 to 2049, 50 to 99 are 1950 to 1999. A time is two or
// three numbers with ':' or '.' between them, AM or PM behind, or one number with AM or PM.
[[nodiscard]] std::optional<Date> readDate(std::u16string_view text, const Locale& locale);

// The date alone at midnight, the time alone on 30 December 1899, else both with a blank between;
// nullopt when it is out of range.
[[nodiscard]] std::optional<std::u16string> printDate(Date date, const Locale& locale);

// Appends a date written by a locale's pattern: d dd ddd dddd M MM MMM MMMM y yy yyyy H HH h hh m
// mm s ss tt, '/' and ':' being the locale's separators and everything else itself.
void appendPattern(std::u16string& out, std::u16string_view pattern, const CivilTime& when,
                   const Locale& locale);

}  // namespace kap::convert
