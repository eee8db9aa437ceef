#include <kaputil/automation/decimal.hpp>

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "automation/convert/decimal_digits.hpp"
#include "automation/convert/number_text.hpp"

namespace kap {
namespace {

using Magnitude = std::array<std::uint32_t, 3>;

// magnitude = magnitude * 10 + digit; false (and unchanged) when that needs more than 96 bits.
bool appendDigit(Magnitude& magnitude, std::uint32_t digit) {
    Magnitude grown{};
    std::uint64_t carry = digit;
    for (std::size_t i = 0; i < magnitude.size(); ++i) {
        const std::uint64_t part = std::uint64_t{magnitude[i]} * 10 + carry;
        grown[i] = static_cast<std::uint32_t>(part);
        carry = part >> 32;
    }
    if (carry != 0) {
        return false;
    }
    magnitude = grown;
    return true;
}

// magnitude = magnitude / 10; returns the remainder.
std::uint32_t dropDigit(Magnitude& magnitude) {
    std::uint64_t remainder = 0;
    for (std::size_t i = magnitude.size(); i-- > 0;) {
        const std::uint64_t part = (remainder << 32) | magnitude[i];
        magnitude[i] = static_cast<std::uint32_t>(part / 10);
        remainder = part % 10;
    }
    return static_cast<std::uint32_t>(remainder);
}

bool increment(Magnitude& magnitude) {
    for (std::uint32_t& word : magnitude) {
        if (++word != 0) {
            return true;
        }
    }
    return false;
}

// A plain text, taken apart: its digits without zeros in front, times a power of ten.
struct PlainDigits {
    bool negative = false;
    std::string digits;
    int exponent = 0;
};

std::optional<PlainDigits> takeApart(std::string_view text) {
    PlainDigits parts;
    if (!text.empty() && text.front() == '-') {
        parts.negative = true;
        text.remove_prefix(1);
    }
    bool seenPoint = false;
    bool seenDigit = false;
    for (const char unit : text) {
        if (unit == '.' && !seenPoint) {
            seenPoint = true;
        } else if (unit >= '0' && unit <= '9') {
            seenDigit = true;
            parts.exponent -= seenPoint ? 1 : 0;
            if (!parts.digits.empty() || unit != '0') {
                parts.digits.push_back(unit);
            }
        } else {
            return std::nullopt;
        }
    }
    return seenDigit ? std::optional(parts) : std::nullopt;
}

bool roundsUp(std::string_view rest, bool odd) {
    if (rest.empty() || rest.front() < '5') {
        return false;
    }
    if (rest.front() > '5' || rest.find_first_not_of('0', 1) != std::string_view::npos) {
        return true;
    }
    return odd;  // exactly half: to even
}

}  // namespace

Decimal::Decimal(std::int64_t unscaled, int scale) noexcept
    : scale_(static_cast<std::uint8_t>(scale)), negative_(unscaled < 0) {
    const std::uint64_t size = negative_ ? std::uint64_t{0} - static_cast<std::uint64_t>(unscaled)
                                         : static_cast<std::uint64_t>(unscaled);
    magnitude_[0] = static_cast<std::uint32_t>(size);
    magnitude_[1] = static_cast<std::uint32_t>(size >> 32);
}

Decimal Decimal::fromUnsigned(std::uint64_t value) noexcept {
    Decimal made;
    made.magnitude_[0] = static_cast<std::uint32_t>(value);
    made.magnitude_[1] = static_cast<std::uint32_t>(value >> 32);
    return made;
}

std::optional<Decimal> convert::decimalOfDigits(std::string_view digits, int exponent,
                                                bool negative) {
    Magnitude magnitude{};
    int scale = -exponent - static_cast<int>(digits.size());
    std::size_t taken = 0;
    while (taken < digits.size() && scale < Decimal::kMaxScale &&
           appendDigit(magnitude, static_cast<std::uint32_t>(digits[taken] - '0'))) {
        ++taken;
        ++scale;
    }
    for (; scale < 0; ++scale) {
        if (taken < digits.size() || !appendDigit(magnitude, 0)) {
            return std::nullopt;  // digits of the whole part are left over
        }
    }
    if (scale > Decimal::kMaxScale) {
        return Decimal{};  // smaller than the smallest step
    }
    if (roundsUp(digits.substr(taken), (magnitude[0] & 1U) != 0) && !increment(magnitude)) {
        if (scale == 0) {
            return std::nullopt;
        }
        // 2^96 itself, one digit shorter: 7922816251426433759354395033.6 rounds up to ...034.
        magnitude = {0x9999999AU, 0x99999999U, 0x19999999U};
        --scale;
    }
    if (magnitude == Magnitude{}) {
        return Decimal{};
    }
    const bool cut = taken < digits.size();
    for (Magnitude shorter = magnitude; cut && scale > 0 && dropDigit(shorter) == 0; --scale) {
        magnitude = shorter;  // rounding left zeros at the end
    }
    return Decimal(magnitude, scale, negative);
}

std::optional<Decimal> Decimal::parse(std::string_view plain) {
    const auto parts = takeApart(plain);
    if (!parts) {
        return std::nullopt;
    }
    return convert::decimalOfDigits(parts->digits, parts->exponent, parts->negative);
}

std::optional<Decimal> Decimal::fromDouble(double value, int digits) {
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    return convert::toDecimal(convert::digitsOf(value, digits));
}

std::string Decimal::plainText() const {
    Magnitude rest = magnitude_;
    std::string reversed;
    int position = 0;
    while (rest != Magnitude{} || position <= scale_) {
        if (position == scale_ && scale_ != 0) {
            reversed.push_back('.');
        }
        reversed.push_back(static_cast<char>('0' + dropDigit(rest)));
        ++position;
    }
    if (scale_ != 0) {
        const std::size_t kept = reversed.find_first_not_of('0');
        reversed.erase(0, reversed[kept] == '.' ? kept + 1 : kept);
    }
    if (negative_ && !isZero()) {
        reversed.push_back('-');
    }
    return {reversed.rbegin(), reversed.rend()};
}

double Decimal::toDouble() const {
    const std::string text = plainText();
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::optional<std::int64_t> Decimal::scaledTo(int scale) const {
    Magnitude magnitude = magnitude_;
    for (int i = scale_; i < scale; ++i) {
        if (!appendDigit(magnitude, 0)) {
            return std::nullopt;
        }
    }
    std::uint32_t last = 0;
    bool sticky = false;
    for (int i = scale_; i > scale; --i) {
        sticky = sticky || last != 0;
        last = dropDigit(magnitude);
    }
    const bool odd = (magnitude[0] & 1U) != 0;
    if ((last > 5 || (last == 5 && (sticky || odd))) && !increment(magnitude)) {
        return std::nullopt;
    }
    const std::uint64_t size = (std::uint64_t{magnitude[1]} << 32) | magnitude[0];
    constexpr auto kLimit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (magnitude[2] != 0 || size > kLimit + (negative_ ? 1 : 0)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(negative_ ? std::uint64_t{0} - size : size);
}

bool Decimal::isZero() const noexcept {
    return magnitude_ == Magnitude{};
}

}  // namespace kap
