#include "engine/values/number_format.hpp"

#include <algorithm>
#include <cstdlib>

#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"

// The standard formats: a letter, and the digits that it takes.
namespace kap::engine {

namespace {

constexpr std::size_t kThousand = 3;

std::u16string widened(std::string_view plainText) {
    return {plainText.begin(), plainText.end()};
}

std::u16string signedText(bool negative, std::u16string text) {
    if (negative) text.insert(text.begin(), u'-');
    return text;
}

// With a fixed number of decimals; a number that is rounded to zero has no sign.
std::u16string fixedText(const DecimalDigits& number, std::size_t decimals, bool groups,
                         const Locale& locale) {
    const DecimalDigits shown = number.rounded(decimals);
    std::u16string text = groups ? grouped(shown.whole, locale) : widened(shown.whole);
    if (decimals > 0) text += locale.decimalSeparator + widened(shown.fraction);
    return signedText(shown.negative && !shown.isZero(), std::move(text));
}

// The first digit that is not zero becomes the whole part; the exponent that this takes.
int normalized(DecimalDigits& number) {
    if (number.isZero()) return 0;
    int exponent = static_cast<int>(number.whole.size()) - 1;
    if (number.whole == "0") {
        exponent = -1 - static_cast<int>(number.fraction.find_first_not_of('0'));
    }
    number = number.shifted(-exponent);
    return exponent;
}

std::u16string exponentText(char16_t letter, int exponent, std::size_t width) {
    std::string digits = plain::text(std::abs(exponent));
    if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
    return std::u16string(1, letter) + (exponent < 0 ? u"-" : u"+") + widened(digits);
}

std::u16string scientificText(DecimalDigits number, std::size_t decimals, char16_t letter,
                              const Locale& locale) {
    constexpr std::size_t kExponentDigits = 3;
    int exponent = normalized(number);
    number = number.rounded(decimals);
    exponent += normalized(number);  // 9.99 is rounded to 10
    return fixedText(number, decimals, false, locale) +
           exponentText(letter, exponent, kExponentDigits);
}

// The shorter of both forms; an exact number without a precision is what it is.
std::u16string generalText(const FormattedNumber& number, std::optional<std::size_t> precision,
                           char16_t letter, const Locale& locale) {
    constexpr std::size_t kDoubleDigits = 15;
    DecimalDigits shown = number.digits;
    if (!number.approximate && !precision.value_or(0)) {
        return fixedText(shown, shown.fraction.size(), false, locale);
    }
    const std::size_t digits = precision.value_or(0) > 0 ? *precision : kDoubleDigits;
    int exponent = normalized(shown);
    shown = shown.rounded(digits - 1);
    exponent += normalized(shown);
    shown.fraction.erase(shown.fraction.find_last_not_of('0') + 1);
    constexpr int kSmallest = -5;
    if (exponent >= static_cast<int>(digits) || exponent < kSmallest) {
        constexpr std::size_t kExponentDigits = 2;
        return fixedText(shown, shown.fraction.size(), false, locale) +
               exponentText(letter == u'g' ? u'e' : u'E', exponent, kExponentDigits);
    }
    shown = shown.shifted(exponent);
    return fixedText(shown, shown.fraction.size(), false, locale);
}

std::u16string currencyText(const DecimalDigits& number, std::size_t decimals,
                            const Locale& locale) {
    constexpr std::u16string_view kUsual = u"0.00";
    const std::u16string wanted = decimals == 0 ? u"0" : u"0." + std::u16string(decimals, u'0');
    std::u16string pattern(locale.currencyFormat);
    for (std::size_t at = pattern.find(kUsual); at != std::u16string::npos;
         at = pattern.find(kUsual, at + wanted.size())) {
        pattern.replace(at, kUsual.size(), wanted);
    }
    return formatByPattern(number, pattern, locale);
}

std::u16string hexadecimal(std::int64_t value, int bits, std::size_t width, bool lower) {
    auto rest = static_cast<std::uint64_t>(value);
    if (bits < 64) rest &= (std::uint64_t{1} << static_cast<unsigned>(bits)) - 1;
    const std::string text = hex::ofNumber(rest, lower ? hex::Case::Lower : hex::Case::Upper,
                                           std::max<std::size_t>(width, 1));
    return {text.begin(), text.end()};
}

struct StandardFormat {
    char16_t letter;
    std::optional<std::size_t> precision;
};

std::optional<StandardFormat> standardOf(std::u16string_view format) {
    constexpr std::size_t kLongest = 3;
    if (format.empty() || format.size() > kLongest) return std::nullopt;
    const char16_t letter = format.front();
    const bool isLetter = (letter >= u'a' && letter <= u'z') || (letter >= u'A' && letter <= u'Z');
    if (!isLetter) return std::nullopt;
    StandardFormat result{letter, std::nullopt};
    for (const char16_t digit : format.substr(1)) {
        if (digit < u'0' || digit > u'9') return std::nullopt;
        result.precision = result.precision.value_or(0) * 10 + (digit - u'0');
    }
    return result;
}

std::optional<std::u16string> standardText(const FormattedNumber& number,
                                           const StandardFormat& format, const Locale& locale) {
    constexpr std::size_t kUsualDecimals = 2;
    constexpr std::size_t kUsualScientific = 6;
    constexpr int kPercent = 2;
    const std::size_t decimals = format.precision.value_or(kUsualDecimals);
    switch (format.letter) {
        case u'C':
        case u'c':
            return currencyText(number.digits, decimals, locale);
        case u'D':
        case u'd': {
            if (!number.value) return std::nullopt;
            std::string digits = number.digits.whole;
            const std::size_t width = format.precision.value_or(0);
            if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
            return signedText(number.digits.negative, widened(digits));
        }
        case u'E':
        case u'e':
            return scientificText(number.digits, format.precision.value_or(kUsualScientific),
                                  format.letter, locale);
        case u'F':
        case u'f':
            return fixedText(number.digits, decimals, false, locale);
        case u'G':
        case u'g':
            return generalText(number, format.precision, format.letter, locale);
        case u'N':
        case u'n':
            return fixedText(number.digits, decimals, true, locale);
        case u'P':
        case u'p':
            return fixedText(number.digits.shifted(kPercent), decimals, true, locale) + u" %";
        case u'R':
        case u'r':
            if (!number.approximate) return std::nullopt;
            return generalText(number, std::nullopt, u'G', locale);
        case u'X':
        case u'x':
            if (!number.value) return std::nullopt;
            return hexadecimal(*number.value, number.bits, format.precision.value_or(0),
                               format.letter == u'x');
        default:
            return std::nullopt;
    }
}

}  // namespace

std::u16string grouped(std::string_view digits, const Locale& locale) {
    std::u16string text = widened(digits);
    for (std::size_t place = text.size(); place > kThousand;) {
        place -= kThousand;
        text.insert(place, 1, locale.groupSeparator);
    }
    return text;
}

std::optional<std::u16string> formatNumber(const FormattedNumber& number,
                                           std::u16string_view format, const Locale& locale) {
    if (format.empty()) return generalText(number, std::nullopt, u'G', locale);
    if (const auto standard = standardOf(format)) return standardText(number, *standard, locale);
    return formatByPattern(number.digits, format, locale);
}

}  // namespace kap::engine
