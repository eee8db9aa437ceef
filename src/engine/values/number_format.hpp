#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/locale.hpp>

#include "engine/values/exact.hpp"

// FORMAT of numbers: the patterns of the server's host language, standard ("N2", "C") and custom
// ("#,##0.00;(0)").
namespace kap::engine {

// A number as decimal digits, so that rounding it is rounding what people see.
struct DecimalDigits {
    bool negative = false;
    std::string whole = "0";  // without zeros in front, but at least one digit
    std::string fraction;

    // Whole number times 10^-scale.
    [[nodiscard]] static DecimalDigits of(Wide value, int scale);
    // The fifteen digits that a double is shown with.
    [[nodiscard]] static DecimalDigits of(double value);

    [[nodiscard]] bool isZero() const;
    // With exactly so many digits behind the point; half goes away from zero.
    [[nodiscard]] DecimalDigits rounded(std::size_t decimals) const;
    // With the point moved to the right, or to the left.
    [[nodiscard]] DecimalDigits shifted(int places) const;
};

// What is formatted: a whole number also has its value, for hexadecimal.
struct FormattedNumber {
    DecimalDigits digits;
    std::optional<std::int64_t> value;
    int bits = 64;
    bool approximate = false;
};

// The number's text; nullopt for a format that numbers of this kind do not have.
[[nodiscard]] std::optional<std::u16string> formatNumber(const FormattedNumber& number,
                                                         std::u16string_view format,
                                                         const Locale& locale);

// The text by a custom pattern, of up to three sections for positive, negative and zero.
[[nodiscard]] std::u16string formatByPattern(const DecimalDigits& number,
                                             std::u16string_view pattern, const Locale& locale);

// Whole digits with the locale's separator between thousands.
[[nodiscard]] std::u16string grouped(std::string_view digits, const Locale& locale);

}  // namespace kap::engine
