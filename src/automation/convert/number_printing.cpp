#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "automation/convert/number_text.hpp"

namespace kap::convert {
namespace {

// What the types surely carry.
constexpr int kDoubleDigits = 15;
constexpr int kSingleDigits = 7;

std::u16string widen(std::string_view ascii, char16_t decimalSeparator) {
    std::u16string out(ascii.size(), u'\0');
    std::transform(ascii.begin(), ascii.end(), out.begin(), [decimalSeparator](char unit) {
        return unit == '.'   ? decimalSeparator
               : unit == 'e' ? u'E'
                             : static_cast<char16_t>(static_cast<unsigned char>(unit));
    });
    return out;
}

// The digits of a positive number, the first one standing before the point, and its power of ten.
struct Digits {
    std::array<char, 32> text{};
    int count = 0;
    int exponent = 0;
};

// Takes "d.ddde-05" apart.
Digits takeApart(const char* first, const char* last) {
    Digits digits;
    const char* mark = std::find(first, last, 'e');
    for (; first != mark; ++first) {
        if (*first != '.') {
            digits.text[static_cast<std::size_t>(digits.count++)] = *first;
        }
    }
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), last, digits.exponent);
    while (digits.count > 1 && digits.text[static_cast<std::size_t>(digits.count - 1)] == '0') {
        --digits.count;
    }
    return digits;
}

// Cuts digits off behind `precision` places, halves away from zero. False, and nothing done, when
// exactly a half follows: what the digits stand for may lie on either side of it.
bool roundTo(Digits& digits, int precision) {
    if (digits.count <= precision) {
        return true;
    }
    const auto cut = digits.text.begin() + precision;
    const bool half = *cut == '5' && digits.count == precision + 1;
    if (half) {
        return false;
    }
    const bool up = *cut >= '5';
    digits.count = precision;
    while (up) {
        char& last = digits.text[static_cast<std::size_t>(digits.count - 1)];
        if (last != '9') {
            ++last;
            break;
        }
        if (digits.count == 1) {
            last = '1';
            ++digits.exponent;
            break;
        }
        --digits.count;
    }
    while (digits.count > 1 && digits.text[static_cast<std::size_t>(digits.count - 1)] == '0') {
        --digits.count;
    }
    return true;
}

// The value rounded to `precision` digits. The shortest text that reads back as the value is made
// several times faster than the exactly rounded one. Its digits round to the same ones unless they
// end in a half, for no number as short as the half lies nearer to the value; denormal numbers,
// which carry fewer digits, go the long way.
template <class T>
Digits roundedDigits(T value, int precision) {
    std::array<char, 40> text{};
    char* const last = text.data() + text.size();
    if (value >= std::numeric_limits<T>::min()) {
        const auto end = std::to_chars(text.data(), last, value, std::chars_format::scientific);
        Digits shortest = takeApart(text.data(), end.ptr);
        if (roundTo(shortest, precision)) {
            return shortest;
        }
    }
    const auto end =
        std::to_chars(text.data(), last, value, std::chars_format::scientific, precision - 1);
    return takeApart(text.data(), end.ptr);
}

char16_t* widenTo(char16_t* out, const char* first, int count) {
    return std::transform(first, first + count, out, [](char digit) {
        return static_cast<char16_t>(static_cast<unsigned char>(digit));
    });
}

char16_t* writeScientific(char16_t* out, const Digits& digits, char16_t decimalSeparator) {
    out = widenTo(out, digits.text.data(), 1);
    if (digits.count > 1) {
        *out++ = decimalSeparator;
        out = widenTo(out, digits.text.data() + 1, digits.count - 1);
    }
    *out++ = u'E';
    *out++ = digits.exponent < 0 ? u'-' : u'+';
    std::array<char, 8> exponent{};
    const int size = std::abs(digits.exponent);
    char* first = exponent.data();
    if (size < 10) {
        *first++ = '0';  // at least two digits
    }
    const auto end = std::to_chars(first, exponent.data() + exponent.size(), size);
    return widenTo(out, exponent.data(), static_cast<int>(end.ptr - exponent.data()));
}

char16_t* writeFixed(char16_t* out, const Digits& digits, char16_t decimalSeparator) {
    const int whole = digits.exponent + 1;
    if (whole <= 0) {
        *out++ = u'0';
        *out++ = decimalSeparator;
        out = std::fill_n(out, -whole, u'0');
        return widenTo(out, digits.text.data(), digits.count);
    }
    out = widenTo(out, digits.text.data(), std::min(whole, digits.count));
    if (digits.count <= whole) {
        return std::fill_n(out, whole - digits.count, u'0');
    }
    *out++ = decimalSeparator;
    return widenTo(out, digits.text.data() + whole, digits.count - whole);
}

// The smallest power of ten that is still written in fixed form.
constexpr int kSmallestFixed = -4;

template <class T>
std::u16string printReal(T value, int precision, char16_t decimalSeparator) {
    if (std::isnan(value)) {
        return widen("-1.#IND", decimalSeparator);
    }
    if (std::isinf(value)) {
        return widen(value < 0 ? "-1.#INF" : "1.#INF", decimalSeparator);
    }
    if (value == T{0}) {
        return u"0";  // minus zero too
    }
    const Digits digits = roundedDigits(std::fabs(value), precision);
    std::array<char16_t, 40> text{};
    char16_t* out = text.data();
    if (value < 0) {
        *out++ = u'-';
    }
    const bool fixed = digits.exponent >= kSmallestFixed && digits.exponent < precision;
    out = fixed ? writeFixed(out, digits, decimalSeparator)
                : writeScientific(out, digits, decimalSeparator);
    return {text.data(), out};
}

template <class T>
NumberText significantDigits(T value, int precision) {
    NumberText number;
    if (!std::isfinite(value) || value == T{0}) {
        return number;
    }
    const Digits digits = roundedDigits(std::fabs(value), precision);
    number.count = static_cast<std::size_t>(digits.count);
    std::copy_n(digits.text.begin(), number.count, number.digits.begin());
    number.exponent = digits.exponent + 1 - digits.count;
    number.negative = value < 0;
    return number;
}

}  // namespace

NumberText digitsOf(double value) {
    return significantDigits(value, kDoubleDigits);
}

NumberText digitsOf(double value, int digits) {
    return significantDigits(value, digits);
}

NumberText digitsOf(float value) {
    return significantDigits(value, kSingleDigits);
}

NumberText digitsOf(const Decimal& value) {
    NumberText number;
    const std::string text = Decimal(value.magnitude(), 0, false).plainText();
    if (value.isZero()) {
        return number;
    }
    const std::size_t last = text.find_last_not_of('0');
    number.count = last + 1;
    std::copy_n(text.begin(), number.count, number.digits.begin());
    number.exponent = static_cast<int>(text.size() - number.count) - value.scale();
    number.negative = value.negative();
    return number;
}

std::u16string printDouble(double value, char16_t decimalSeparator) {
    return printReal(value, kDoubleDigits, decimalSeparator);
}

std::u16string printSingle(float value, char16_t decimalSeparator) {
    return printReal(value, kSingleDigits, decimalSeparator);
}

std::u16string printDecimal(const Decimal& value, char16_t decimalSeparator) {
    return widen(value.plainText(), decimalSeparator);
}

std::u16string printCurrency(Currency value, char16_t decimalSeparator) {
    return printDecimal(Decimal(value.scaled, 4), decimalSeparator);
}

std::u16string printWhole(std::int32_t value) {
    std::array<char, 12> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

}  // namespace kap::convert
