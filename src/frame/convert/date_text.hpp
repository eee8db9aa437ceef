#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kaputil/frame/locale.hpp>
#include <kaputil/frame/variant.hpp>

// Dates and times as people write them, under a locale.
namespace kap::convert {

// Reads a whole text as a date, a time, or both. A date is two or three parts separated by '/',
// '-', '.', or blanks: in the locale's order, or year first when the first part has four digits,
// and in another order when that one is no date; a month may be named. Two-digit years are 1930 to
// 2029; a missing year is the current one.
[[nodiscard]] std::optional<Date> readDate(std::u16string_view text, const Locale& locale);

// The date alone at midnight, the time alone on 30 December 1899, else both with a blank between;
// nullopt when it is out of range.
[[nodiscard]] std::optional<std::u16string> printDate(Date date, const Locale& locale);

}  // namespace kap::convert
