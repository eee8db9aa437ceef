#include <kaputil/frame/decimal.hpp>

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>

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

// The digits of a plain text, taken apart.
struct PlainDigits {
    bool negative = false;
    std::string digits;  // without the point and without leading zeros
    int whole = 0;       // how many of them stand before the point; negative after "0.00"
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
            const bool leadingZero = parts.digits.empty() && unit == '0';
            if (!leadingZero) {
                parts.digits.push_back(unit);
            }
            if (!seenPoint) {
                parts.whole += leadingZero ? 0 : 1;
            } else if (leadingZero) {
                --parts.whole;
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

std::optional<Decimal> Decimal::parse(std::string_view plain) {
    const auto parts = takeApart(plain);
    if (!parts) {
        return std::nullopt;
    }
    Decimal made;
    made.negative_ = parts->negative;
    const auto total = static_cast<int>(parts->digits.size());
    int taken = 0;
    while (taken < total && taken - parts->whole < kMaxScale &&
           appendDigit(
               made.magnitude_,
               static_cast<std::uint32_t>(parts->digits[static_cast<std::size_t>(taken)] - '0'))) {
        ++taken;
    }
    int scale = taken - parts->whole;
    if (scale < 0) {
        return std::nullopt;  // digits of the whole part are left over
    }
    if (scale > kMaxScale) {
        return Decimal{};  // smaller than the smallest step
    }
    const bool odd = (made.magnitude_[0] & 1U) != 0;
    const auto rest = std::string_view(parts->digits).substr(static_cast<std::size_t>(taken));
    if (roundsUp(rest, odd) && !increment(made.magnitude_)) {
        if (scale == 0) {
            return std::nullopt;
        }
        // 2^96 itself, one digit shorter: 7922816251426433759354395033.6 rounds up to ...034.
        made.magnitude_ = {0x9999999AU, 0x99999999U, 0x19999999U};
        --scale;
    }
    made.scale_ = static_cast<std::uint8_t>(scale);
    if (made.isZero()) {
        return Decimal{};
    }
    return made;
}

std::optional<Decimal> Decimal::fromDouble(double value) {
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    // A double below 10^29 has at most 29 digits before the point and 15 that count: the fixed form
    // of the value rounded to 15 digits always fits the buffer.
    std::array<char, 64> rounded{};
    const auto scientific = std::to_chars(rounded.data(), rounded.data() + rounded.size(), value,
                                          std::chars_format::scientific, 14);
    double nearest = 0;
    std::from_chars(rounded.data(), scientific.ptr, nearest);
    if (std::fabs(nearest) >= 1e29) {
        return std::nullopt;
    }
    const std::string_view text(rounded.data(),
                                static_cast<std::size_t>(scientific.ptr - rounded.data()));
    const std::size_t mark = text.find('e');
    int exponent = 0;
    const char* first = text.data() + mark + (text[mark + 1] == '+' ? 2 : 1);
    std::from_chars(first, scientific.ptr, exponent);
    std::string plain(text.substr(0, mark));
    const bool negative = plain.front() == '-';
    std::string digits = plain.substr(negative ? 1 : 0);
    digits.erase(1, 1);  // the point
    std::string shifted;
    if (exponent < 0) {
        shifted = "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    } else {
        const auto whole = static_cast<std::size_t>(exponent) + 1;
        if (digits.size() < whole) {
            digits.append(whole - digits.size(), '0');
        }
        shifted = digits.substr(0, whole) + "." + digits.substr(whole);
    }
    return parse((negative ? "-" : "") + shifted);
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
