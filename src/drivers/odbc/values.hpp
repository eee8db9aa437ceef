#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "drivers/odbc/api.hpp"

// Between the interface's forms of values and the stored ones (see Storage).
namespace kap::ado::odbc {

// Days from 30 December 1899; nullopt for what is no date of the calendar.
[[nodiscard]] std::optional<double> daysOf(const SQL_TIMESTAMP_STRUCT& stamp);
[[nodiscard]] std::optional<double> daysOf(const SQL_DATE_STRUCT& date);
// "18:05:00.25" as a part of a day.
[[nodiscard]] std::optional<double> daysOfClock(std::string_view text);

// The nearest instant with so many decimals of a second, at most six: no more are certain.
[[nodiscard]] SQL_TIMESTAMP_STRUCT stampOf(double days, int decimals);
[[nodiscard]] SQL_DATE_STRUCT dateOf(double days);
[[nodiscard]] std::string clockText(double days);

// A decimal's text taken apart: "-12.50" is -1250 with two decimals. nullopt when it is no plain
// decimal or does not fit into 64 bits; zeros at the end of the decimals are dropped to make it
// fit.
struct DecimalDigits {
    std::int64_t digits = 0;
    int scale = 0;
};
[[nodiscard]] std::optional<DecimalDigits> decimalOf(std::string_view text);
// The same number with `scale` decimals; nullopt when it has more, or does not fit.
[[nodiscard]] std::optional<std::int64_t> scaled(DecimalDigits number, int scale);
// The digits with their decimal point.
[[nodiscard]] std::string decimalText(std::int64_t digits, int scale);

// A decimal's text without signs and zeros that say nothing: "+007.50" is "7.5", ".5" is "0.5".
// Empty when there is no digit in it.
[[nodiscard]] std::string shortestDecimal(std::string_view text);

// Appends UTF-16 as UTF-8; false when it holds half of a surrogate pair.
[[nodiscard]] bool appendUtf8(std::string& text, const char16_t* units, std::size_t count);

}  // namespace kap::ado::odbc
