#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Numbers and dates as texts for programs: the same in every locale, '.' the decimal point, UTF-8.
// What people read goes through <kaputil/automation/convert.hpp>.
namespace kap::plain {

[[nodiscard]] KAPUTIL_EXPORT std::string text(std::int64_t value);
template <std::integral Whole>
[[nodiscard]] std::string text(Whole value) {
    return text(static_cast<std::int64_t>(value));
}

// With zeros in front up to `width` digits; a sign stands before them.
[[nodiscard]] KAPUTIL_EXPORT std::string padded(std::int64_t value, int width);

// The shortest text that reads back as the same number.
[[nodiscard]] KAPUTIL_EXPORT std::string shortest(double value);
[[nodiscard]] KAPUTIL_EXPORT std::string shortest(float value);
// With exactly `decimals` digits behind the point ("2.50", "2.50e+00"), or with at most `digits`
// significant ones in the shorter of both forms.
[[nodiscard]] KAPUTIL_EXPORT std::string fixed(double value, int decimals);
[[nodiscard]] KAPUTIL_EXPORT std::string scientific(double value, int decimals);
[[nodiscard]] KAPUTIL_EXPORT std::string general(double value, int digits);

// A whole text of an optional '-' and digits; nullopt when it is anything else or too large.
[[nodiscard]] KAPUTIL_EXPORT std::optional<std::int64_t> readWhole(std::string_view text);
// The same within the range of an int.
[[nodiscard]] KAPUTIL_EXPORT std::optional<int> readInt(std::string_view text);

struct RealNumber {
    double value = 0;
    bool inRange = true;  // false: larger than any double, or smaller and not zero
};
// A whole text of an optional '-', digits, at most one '.', and an exponent; nullopt when it is
// anything else.
[[nodiscard]] KAPUTIL_EXPORT std::optional<RealNumber> readReal(std::string_view text);

// "2003-12-25", and with the time "2003-12-25 18:05:00", its milliseconds behind it where it has
// any ("18:05:00.250"). Raises 6 for a date outside the calendar.
[[nodiscard]] KAPUTIL_EXPORT std::string isoDate(Date date);
[[nodiscard]] KAPUTIL_EXPORT std::string isoDateTime(Date date);

}  // namespace kap::plain
