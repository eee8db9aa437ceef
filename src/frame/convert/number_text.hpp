#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kaputil/frame/locale.hpp>
#include <kaputil/frame/variant.hpp>

// Numbers as people write them, under a locale.
namespace kap::convert {

// A number read from a text: plain ASCII of the form [-]digits[.digits], and a power of ten.
struct NumberText {
    std::string plain;
    int exponent = 0;
    bool hexadecimal = false;  // "&H" or "&O": `plain` is the value in decimal
};

// Reads a whole text as a number: blanks around, a sign before or after, the locale's decimal and
// group separators and currency sign, parentheses for negative amounts, an exponent (E or D), and
// "&H"/"&O" whole numbers. nullopt when the text is anything else.
[[nodiscard]] std::optional<NumberText> readNumber(std::u16string_view text, const Locale& locale);

[[nodiscard]] std::optional<double> toDouble(const NumberText& number);
[[nodiscard]] std::optional<Decimal> toDecimal(const NumberText& number);

// Prints as the runtime does: 15 significant digits for a double, 7 for a single, scientific form
// outside the range where fixed form shows them, and the locale's decimal separator.
[[nodiscard]] std::u16string printDouble(double value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printSingle(float value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printDecimal(const Decimal& value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printCurrency(Currency value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printWhole(std::int32_t value);

}  // namespace kap::convert
