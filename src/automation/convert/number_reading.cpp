#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "automation/convert/characters.hpp"
#include "automation/convert/decimal_digits.hpp"
#include "automation/convert/number_text.hpp"
#include "base/power.hpp"

namespace kap::convert {
namespace {

// More than any double or decimal needs; a longer exponent overflows or vanishes all the same.
constexpr int kMaxExponent = 9999;

std::u16string_view trimBlanks(std::u16string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Takes the digits of a number as they are met.
class DigitCollector {
public:
    explicit DigitCollector(NumberText& number) : number_(number) {}

    void add(char16_t digit, bool afterPoint) {
        const bool leadingZero = number_.count == 0 && digit == u'0';
        const bool kept = number_.count < NumberText::kMaxDigits - 1;
        seen_ = true;
        if (kept && !leadingZero) {
            number_.digits[number_.count++] = static_cast<char>(digit);
        }
        moreFollows_ = moreFollows_ || (!kept && digit != u'0');
        number_.exponent += (afterPoint ? -1 : 0) + (kept ? 0 : 1);
    }

    [[nodiscard]] bool any() const { return seen_; }

    void finish(int exponent) {
        number_.exponent += exponent;
        if (moreFollows_) {
            number_.digits[number_.count++] = '1';
            --number_.exponent;
        }
        while (number_.count > 0 && number_.digits[number_.count - 1] == '0') {
            --number_.count;
            ++number_.exponent;
        }
    }

private:
    NumberText& number_;
    bool seen_ = false;
    bool moreFollows_ = false;
};

// Walks over a number text. Before and behind the digits, in any order, may stand blanks, one plus
// and one minus in all, a pair of parentheses, and the currency sign on each side; an exponent has
// no currency sign before it.
class NumberReader {
public:
    NumberReader(std::u16string_view text, const Locale& locale) : rest_(text), locale_(locale) {}

    std::optional<NumberText> read() {
        while (takeMark(before_, u'(') || takeBlank()) {
        }
        readDigits();
        int exponent = 0;
        if (!digits_.any() || !readExponent(exponent)) {
            return std::nullopt;
        }
        while (takeMark(behind_, u')') || takeBlank()) {
        }
        if (!rest_.empty() || before_.parenthesis != behind_.parenthesis ||
            (before_.minus && behind_.minus) || (before_.plus && behind_.plus)) {
            return std::nullopt;
        }
        digits_.finish(exponent);
        number_.negative = before_.minus || behind_.minus || before_.parenthesis;
        return number_;
    }

private:
    // What has been met on one side of the digits.
    struct Marks {
        bool plus = false;
        bool minus = false;
        bool parenthesis = false;
        bool currency = false;
    };

    bool takeMark(Marks& marks, char16_t parenthesis) {
        return takeOnce(marks.plus, u"+") || takeOnce(marks.minus, u"-") ||
               takeOnce(marks.parenthesis, {&parenthesis, 1}) ||
               takeOnce(marks.currency, locale_.currencySign);
    }

    bool takeOnce(bool& taken, std::u16string_view mark) {
        if (taken || !rest_.starts_with(mark)) {
            return false;
        }
        rest_.remove_prefix(mark.size());
        taken = true;
        return true;
    }

    bool takeBlank() {
        if (rest_.empty() || !isBlank(rest_.front())) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    void readDigits() {
        bool afterPoint = false;
        for (; !rest_.empty(); rest_.remove_prefix(1)) {
            const char16_t unit = rest_.front();
            if (isDigit(unit)) {
                digits_.add(unit, afterPoint);
            } else if (unit == locale_.decimalSeparator && !afterPoint) {
                afterPoint = true;
            } else if (unit != locale_.groupSeparator || !digits_.any()) {
                return;
            }
        }
    }

    // False when an exponent is begun and not finished.
    bool readExponent(int& exponent) {
        if (rest_.empty() || (rest_.front() != u'e' && rest_.front() != u'E')) {
            return true;
        }
        if (before_.currency) {
            return false;
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
        for (; !rest_.empty() && isDigit(rest_.front()); rest_.remove_prefix(1)) {
            exponent = std::min(kMaxExponent, exponent * 10 + (rest_.front() - u'0'));
        }
        exponent = negative ? -exponent : exponent;
        return true;
    }

    std::u16string_view rest_;
    const Locale& locale_;
    NumberText number_;
    DigitCollector digits_{number_};
    Marks before_;
    Marks behind_;
};

// The value of a hexadecimal digit, 16 for any other character.
unsigned digitValue(char16_t unit) {
    if (isDigit(unit)) {
        return static_cast<unsigned>(unit - u'0');
    }
    const auto letter = static_cast<char16_t>(unit | 0x20);  // lower case
    return letter >= u'a' && letter <= u'f' ? static_cast<unsigned>(letter - u'a' + 10) : 16U;
}

std::optional<NumberText> readPattern(std::u16string_view digits, int bitsPerDigit) {
    NumberText number;
    const unsigned base = 1U << bitsPerDigit;
    bool tooWide = false;
    for (const char16_t unit : digits) {
        const unsigned digit = digitValue(unit);
        if (digit >= base) {
            return std::nullopt;
        }
        tooWide = tooWide || number.bits > (~std::uint64_t{0} >> bitsPerDigit);
        number.bits = (number.bits << bitsPerDigit) | digit;
    }
    if (tooWide) {
        number.digits[number.count++] = '1';
        number.exponent = kMaxExponent;  // a number that no type holds
        return number;
    }
    const std::size_t digitsOf32Bits = bitsPerDigit == 4 ? 8 : 11;
    const bool narrow = digits.size() <= digitsOf32Bits && number.bits <= 0xFFFFFFFFU;
    number.pattern = narrow ? NumberText::Pattern::Bits32 : NumberText::Pattern::Bits64;
    return digits.empty() ? std::nullopt : std::optional(number);
}

}  // namespace

std::optional<NumberText> readNumber(std::u16string_view text, const Locale& locale) {
    const std::u16string_view trimmed = trimBlanks(upToNull(text));
    if (trimmed.starts_with(u"&H") || trimmed.starts_with(u"&h")) {
        return readPattern(trimmed.substr(2), 4);
    }
    if (trimmed.starts_with(u"&O") || trimmed.starts_with(u"&o")) {
        return readPattern(trimmed.substr(2), 3);
    }
    return NumberReader(trimmed, locale).read();
}

std::optional<double> readPlainDouble(std::u16string_view text, const Locale& locale) {
    constexpr std::size_t kMostDigits = 15;  // every such whole number is a double
    const bool negative = !text.empty() && text.front() == u'-';
    text.remove_prefix(negative ? 1 : 0);
    if (text.empty() || text.size() > kMostDigits + 1 || !isDigit(text.front())) {
        return std::nullopt;
    }
    // Without a branch for each character: where the separator stands differs from text to text,
    // and a branch that is foretold wrong costs more than the digits of a number.
    std::int64_t digits = 0;
    std::size_t point = text.size();
    std::size_t others = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isOne = isDigit(text[i]);
        const std::int64_t longer = digits * 10 + (text[i] - u'0');
        digits = isOne ? longer : digits;
        point = isOne ? point : i;
        others += isOne ? 0U : 1U;
    }
    if (others > 1 || (others == 1 && text[point] != locale.decimalSeparator)) {
        return std::nullopt;
    }
    const std::size_t decimals = point == text.size() ? 0 : text.size() - point - 1;
    if (point == text.size() && text.size() > kMostDigits) {
        return std::nullopt;
    }
    // Both are exact, so the quotient is the nearest double.
    const double value = static_cast<double>(digits) / powerOfTen(static_cast<int>(decimals));
    return negative && digits != 0 ? -value : value;
}

std::optional<double> toDouble(const NumberText& number) {
    switch (number.pattern) {
        case NumberText::Pattern::Bits32:
            return static_cast<std::int32_t>(static_cast<std::uint32_t>(number.bits));
        case NumberText::Pattern::Bits64:
            return static_cast<double>(number.bits);
        case NumberText::Pattern::None:
            break;
    }
    if (number.count == 0) {
        return 0.0;
    }
    std::array<char, NumberText::kMaxDigits + 16> text{};
    char* end = std::copy_n(number.digits.begin(), number.count, text.begin());
    *end++ = 'e';
    end = std::to_chars(end, text.data() + text.size(), number.exponent).ptr;
    double value = 0;
    if (std::from_chars(text.data(), end, value).ec == std::errc::result_out_of_range) {
        const bool small = static_cast<int>(number.count) + number.exponent < 0;
        return small ? std::optional(0.0) : std::nullopt;
    }
    return number.negative ? -value : value;
}

std::optional<Decimal> toDecimal(const NumberText& number) {
    switch (number.pattern) {
        case NumberText::Pattern::Bits32:
        case NumberText::Pattern::Bits64:
            return Decimal::fromUnsigned(number.bits);
        case NumberText::Pattern::None:
            break;
    }
    return decimalOfDigits(number.text(), number.exponent, number.negative);
}

}  // namespace kap::convert
