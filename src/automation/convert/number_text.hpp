#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/locale.hpp>
#include <kaputil/automation/variant.hpp>

// Numbers as people write them, under a locale.
namespace kap::convert {

// A number read from a text: its digits as a whole number, times a power of ten.
struct NumberText {
    // More digits than any type holds; when others follow, the last one only says so.
    static constexpr std::size_t kMaxDigits = 40;
    std::array<char, kMaxDigits> digits{};  // ASCII, without zeros in front or at the end
    std::size_t count = 0;                  // 0: the number is zero
    int exponent = 0;
    bool negative = false;

    // "&H" and "&O" name a bit pattern instead: the low 32 bits, or up to 64 when more digits are
    // written than 32 bits have.
    enum class Pattern : unsigned char { None, Bits32, Bits64 };
    Pattern pattern = Pattern::None;
    std::uint64_t bits = 0;

    [[nodiscard]] std::string_view text() const noexcept { return {digits.data(), count}; }
};

// Reads a whole text as a number: blanks around, signs and the currency sign before or after, the
// locale's decimal separator, its group separator anywhere among the digits, parentheses for
// negative amounts, an exponent (E), and "&H"/"&O" whole numbers. nullopt when the text is anything
// else.
[[nodiscard]] std::optional<NumberText> readNumber(std::u16string_view text, const Locale& locale);

// The short way for most texts, the same number as by `readNumber`: an optional '-', digits and one
// decimal separator among them, at most fifteen digits. nullopt when the text is anything else.
[[nodiscard]] std::optional<double> readPlainDouble(std::u16string_view text, const Locale& locale);

// The nearest double, zero when it is too small; nullopt when it is too large.
[[nodiscard]] std::optional<double> toDouble(const NumberText& number);
[[nodiscard]] std::optional<Decimal> toDecimal(const NumberText& number);

// The digits of a value: as many as its type surely carries, 15 of a double and 7 of a float, or
// as many as are asked for, up to 17. What is not finite has none.
[[nodiscard]] NumberText digitsOf(double value);
[[nodiscard]] NumberText digitsOf(double value, int digits);
[[nodiscard]] NumberText digitsOf(float value);
[[nodiscard]] NumberText digitsOf(const Decimal& value);

// Prints as the runtime does: 15 significant digits for a double, 7 for a single, scientific form
// outside the range where fixed form shows them, and the locale's decimal separator.
[[nodiscard]] std::u16string printDouble(double value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printSingle(float value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printDecimal(const Decimal& value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printCurrency(Currency value, char16_t decimalSeparator);
[[nodiscard]] std::u16string printWhole(std::int32_t value);

}  // namespace kap::convert
