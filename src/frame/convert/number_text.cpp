#include "frame/convert/number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

#include "frame/unicode.hpp"

namespace kap::convert {
namespace {

// More than any double or decimal needs; a longer exponent overflows or vanishes all the same.
constexpr int kMaxExponent = 9999;

bool isBlank(char16_t unit) {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u00A0';
}

bool isDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

std::u16string_view trimBlanks(std::u16string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Walks over a number text; what may stand once is remembered.
class NumberReader {
public:
    NumberReader(std::u16string_view text, const Locale& locale) : rest_(text), locale_(locale) {}

    std::optional<NumberText> read() {
        readPrefix();
        readDigits();
        if (!seenDigit_ || !readExponent()) {
            return std::nullopt;
        }
        readSuffix();
        if (!rest_.empty() || openParenthesis_) {
            return std::nullopt;
        }
        if (negative_) {
            number_.plain.insert(number_.plain.begin(), '-');
        }
        return std::move(number_);
    }

private:
    bool takeSign() {
        if (seenSign_ || rest_.empty() || (rest_.front() != u'-' && rest_.front() != u'+')) {
            return false;
        }
        negative_ = rest_.front() == u'-';
        seenSign_ = true;
        rest_.remove_prefix(1);
        return true;
    }

    bool takeCurrencySign() {
        if (seenCurrency_ || !rest_.starts_with(locale_.currencySign)) {
            return false;
        }
        seenCurrency_ = true;
        rest_.remove_prefix(locale_.currencySign.size());
        return true;
    }

    bool takeBlank() {
        if (rest_.empty() || !isBlank(rest_.front())) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    bool takeParenthesis(char16_t wanted) {
        if (rest_.empty() || rest_.front() != wanted || openParenthesis_ != (wanted == u')') ||
            (wanted == u'(' && seenSign_)) {
            return false;
        }
        openParenthesis_ = wanted == u'(';
        seenSign_ = true;
        negative_ = true;
        rest_.remove_prefix(1);
        return true;
    }

    void readPrefix() {
        while (takeSign() || takeCurrencySign() || takeParenthesis(u'(') || takeBlank()) {
        }
    }

    void readSuffix() {
        while (takeSign() || takeCurrencySign() || takeParenthesis(u')') || takeBlank()) {
        }
    }

    void readDigits() {
        bool seenPoint = false;
        while (!rest_.empty()) {
            const char16_t unit = rest_.front();
            if (isDigit(unit)) {
                number_.plain.push_back(static_cast<char>(unit));
                seenDigit_ = true;
            } else if (unit == locale_.decimalSeparator && !seenPoint) {
                seenPoint = true;
                number_.plain.push_back('.');
            } else if (unit != locale_.groupSeparator || seenPoint || !seenDigit_) {
                return;
            }
            rest_.remove_prefix(1);
        }
    }

    // False when an exponent is begun and not finished.
    bool readExponent() {
        if (rest_.empty() || std::u16string_view(u"eEdD").find(rest_.front()) == rest_.npos) {
            return true;
        }
        rest_.remove_prefix(1);
        bool negative = false;
        if (!rest_.empty() && (rest_.front() == u'-' || rest_.front() == u'+')) {
            negative = rest_.front() == u'-';
            rest_.remove_prefix(1);
        }
        if (rest_.empty() || !isDigit(rest_.front())) {
            return false;
        }
        int exponent = 0;
        while (!rest_.empty() && isDigit(rest_.front())) {
            exponent = std::min(kMaxExponent, exponent * 10 + (rest_.front() - u'0'));
            rest_.remove_prefix(1);
        }
        number_.exponent = negative ? -exponent : exponent;
        return true;
    }

    std::u16string_view rest_;
    const Locale& locale_;
    NumberText number_;
    bool negative_ = false;
    bool seenSign_ = false;
    bool seenCurrency_ = false;
    bool seenDigit_ = false;
    bool openParenthesis_ = false;
};

// "&HFFFF" is a 16-bit pattern and so -1; longer ones are 32-bit, and up to 64 bits are read.
std::optional<NumberText> readPrefixed(std::u16string_view digits, int bitsPerDigit) {
    std::uint64_t value = 0;
    const auto limit = static_cast<std::uint64_t>(1) << bitsPerDigit;
    if (digits.empty()) {
        return std::nullopt;
    }
    for (const char16_t unit : digits) {
        const char16_t letter = unicode::upper(unit);
        const std::uint64_t digit = isDigit(unit) ? static_cast<std::uint64_t>(unit - u'0')
                                    : letter >= u'A' && letter <= u'F'
                                        ? static_cast<std::uint64_t>(letter - u'A' + 10)
                                        : limit;
        if (digit >= limit || value > (~std::uint64_t{0} >> bitsPerDigit)) {
            return std::nullopt;
        }
        value = (value << bitsPerDigit) | digit;
    }
    NumberText number;
    number.hexadecimal = true;
    number.plain = Decimal::fromUnsigned(value).plainText();
    return number;
}

std::u16string widen(std::string_view ascii, char16_t decimalSeparator) {
    std::u16string out;
    out.reserve(ascii.size());
    for (const char unit : ascii) {
        out.push_back(unit == '.'   ? decimalSeparator
                      : unit == 'e' ? u'E'
                                    : static_cast<char16_t>(static_cast<unsigned char>(unit)));
    }
    return out;
}

// to_chars in general form with a precision prints as many digits as asked and keeps trailing
// zeros off, as the runtime does.
template <class T>
std::u16string printReal(T value, int digits, char16_t decimalSeparator) {
    if (std::isnan(value)) {
        return u"-1,#IND";
    }
    if (std::isinf(value)) {
        return value < 0 ? u"-1,#INF" : u"1,#INF";
    }
    std::array<char, 32> text{};
    const T printed = value == T{0} ? T{0} : value;  // minus zero prints as 0
    const auto end = std::to_chars(text.data(), text.data() + text.size(), printed,
                                   std::chars_format::general, digits);
    return widen({text.data(), static_cast<std::size_t>(end.ptr - text.data())}, decimalSeparator);
}

}  // namespace

std::optional<NumberText> readNumber(std::u16string_view text, const Locale& locale) {
    const std::u16string_view trimmed = trimBlanks(text);
    if (trimmed.size() > 2 && trimmed.front() == u'&') {
        const char16_t base = unicode::upper(trimmed[1]);
        if (base == u'H' || base == u'O') {
            return readPrefixed(trimmed.substr(2), base == u'H' ? 4 : 3);
        }
    }
    return NumberReader(trimmed, locale).read();
}

std::optional<double> toDouble(const NumberText& number) {
    std::string text = number.plain;
    if (number.exponent != 0) {
        std::array<char, 8> exponent{};
        const auto end =
            std::to_chars(exponent.data(), exponent.data() + exponent.size(), number.exponent);
        text += 'e';
        text.append(exponent.data(), end.ptr);
    }
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // Too small is zero, too large has no double.
        const std::size_t significant = number.plain.find_first_of("123456789");
        const std::size_t point = number.plain.find('.');
        const bool small =
            number.exponent < 0 || (point != std::string::npos && significant > point);
        return small ? std::optional(0.0) : std::nullopt;
    }
    return value;
}

std::optional<Decimal> toDecimal(const NumberText& number) {
    if (number.exponent == 0) {
        return Decimal::parse(number.plain);
    }
    // Move the point by as many places as the exponent says; beyond 60 places nothing is left.
    constexpr int kPlaces = 60;
    const int places = std::min(std::max(number.exponent, -kPlaces), kPlaces);
    const bool negative = number.plain.starts_with('-');
    std::string digits = number.plain.substr(negative ? 1 : 0);
    std::size_t point = digits.find('.');
    if (point == std::string::npos) {
        point = digits.size();
    } else {
        digits.erase(point, 1);
    }
    const int moved = static_cast<int>(point) + places;
    if (moved < 0) {
        digits.insert(0, static_cast<std::size_t>(-moved), '0');
    } else if (static_cast<std::size_t>(moved) > digits.size()) {
        digits.append(static_cast<std::size_t>(moved) - digits.size(), '0');
    }
    digits.insert(static_cast<std::size_t>(std::max(moved, 0)), ".");
    return Decimal::parse((negative ? "-" : "") + digits);
}

std::u16string printDouble(double value, char16_t decimalSeparator) {
    return printReal(value, 15, decimalSeparator);
}

std::u16string printSingle(float value, char16_t decimalSeparator) {
    return printReal(value, 7, decimalSeparator);
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
