#include "engine/values/exact.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "automation/convert/scaled_text.hpp"
#include "base/ascii.hpp"

namespace kap::engine {

namespace {

constexpr Wide kMinNarrow = std::numeric_limits<std::int64_t>::min();
constexpr Wide kMaxNarrow = std::numeric_limits<std::int64_t>::max();

Wide magnitude(Wide value) {
    return value < 0 ? -value : value;
}

#ifdef __SIZEOF_INT128__
bool addOverflows(Wide left, Wide right, Wide& result) {
    return __builtin_add_overflow(left, right, &result);
}
bool multiplyOverflows(Wide left, Wide right, Wide& result) {
    return __builtin_mul_overflow(left, right, &result);
}
#else
bool addOverflows(Wide left, Wide right, Wide& result) {
    return Wide::addOverflows(left, right, result);
}
bool multiplyOverflows(Wide left, Wide right, Wide& result) {
    return Wide::multiplyOverflows(left, right, result);
}
#endif

// A whole number without sign of up to 416 bits: what stands between the factors of long decimals
// and their result.
class LongNumber {
public:
    explicit LongNumber(Wide value) {
        for (std::size_t i = 0; i < 4; ++i)
            words_.at(i) = static_cast<std::uint32_t>(
                static_cast<std::uint64_t>(value >> static_cast<int>(kBits * i)));
    }

    void multiply(std::uint32_t factor) {
        std::uint64_t carry = 0;
        for (std::uint32_t& word : words_) {
            carry += std::uint64_t{word} * factor;
            word = static_cast<std::uint32_t>(carry);
            carry >>= kBits;
        }
    }

    void multiply(const LongNumber& factor) {
        LongNumber result(Wide{0});
        for (std::size_t i = 0; i < kWords; ++i) {
            std::uint64_t carry = 0;
            for (std::size_t j = 0; i + j < kWords; ++j) {
                carry += std::uint64_t{words_[i]} * factor.words_[j] + result.words_[i + j];
                result.words_[i + j] = static_cast<std::uint32_t>(carry);
                carry >>= kBits;
            }
        }
        *this = result;
    }

    // Bit by bit: what is as long as that is seldom.
    [[nodiscard]] std::pair<LongNumber, LongNumber> dividedBy(const LongNumber& divisor) const {
        LongNumber quotient(Wide{0});
        LongNumber rest(Wide{0});
        for (std::size_t bit = kWords * kBits; bit-- > 0;) {
            rest.doubleWith(words_[bit / kBits] >> (bit % kBits) & 1U);
            if (rest.isLess(divisor)) continue;
            rest.subtract(divisor);
            quotient.words_[bit / kBits] |= std::uint32_t{1} << (bit % kBits);
        }
        return {quotient, rest};
    }

    // Whether twice the number is as large as the other.
    [[nodiscard]] bool isHalfOf(const LongNumber& other) const {
        LongNumber twice = *this;
        twice.doubleWith(0);
        return !twice.isLess(other);
    }

    [[nodiscard]] std::optional<Wide> value() const {
        for (std::size_t i = 4; i < kWords; ++i) {
            if (words_[i] != 0) return std::nullopt;
        }
        if (words_[3] >> (kBits - 1) != 0) return std::nullopt;
        Wide result = 0;
        for (std::size_t i = 4; i-- > 0;)
            result = (result << static_cast<int>(kBits)) | Wide{words_[i]};
        return result;
    }

private:
    static constexpr std::size_t kBits = 32;
    static constexpr std::size_t kWords = 13;

    void doubleWith(std::uint32_t bit) {
        for (std::uint32_t& word : words_) {
            const std::uint32_t next = word >> (kBits - 1);
            word = word << 1U | bit;
            bit = next;
        }
    }

    [[nodiscard]] bool isLess(const LongNumber& other) const {
        return std::lexicographical_compare(words_.rbegin(), words_.rend(), other.words_.rbegin(),
                                            other.words_.rend());
    }

    void subtract(const LongNumber& other) {
        std::int64_t borrow = 0;
        for (std::size_t i = 0; i < kWords; ++i) {
            const std::int64_t difference =
                std::int64_t{words_[i]} - std::int64_t{other.words_[i]} - borrow;
            borrow = difference < 0 ? 1 : 0;
            words_[i] = static_cast<std::uint32_t>(difference);
        }
    }

    std::array<std::uint32_t, kWords> words_{};
};

}  // namespace

Wide powerOfTen(int exponent) {
    Wide result = 1;
    for (int i = 0; i < exponent; ++i)
        result *= 10;
    return result;
}

Wide divide(Wide numerator, Wide denominator, Rounding rounding) {
    const Wide quotient = numerator / denominator;
    if (rounding == Rounding::Truncate) return quotient;
    const Wide remainder = magnitude(numerator % denominator);
    // Half or more, written so that nothing doubles beyond the range.
    if (remainder < magnitude(denominator) - remainder) return quotient;
    return (numerator < 0) == (denominator < 0) ? quotient + 1 : quotient - 1;
}

std::optional<Wide> rescale(Wide value, int from, int to, Rounding rounding) {
    if (to >= from) {
        if (to - from > kMaxPower) return value == 0 ? std::optional<Wide>(0) : std::nullopt;
        return multiply(value, powerOfTen(to - from));
    }
    if (from - to > kMaxPower) return 0;
    return divide(value, powerOfTen(from - to), rounding);
}

std::optional<Wide> sumOf(Wide left, Wide right) {
    Wide result = 0;
    if (addOverflows(left, right, result)) return std::nullopt;
    return result;
}

std::optional<Wide> productWithout(Wide left, Wide right, int drop, Rounding rounding) {
    LongNumber product(magnitude(left));
    product.multiply(LongNumber(magnitude(right)));
    for (; drop < 0; ++drop)
        product.multiply(10);
    LongNumber divisor(Wide{1});
    for (; drop > 0; --drop)
        divisor.multiply(10);
    const auto [quotient, rest] = product.dividedBy(divisor);
    auto result = quotient.value();
    if (!result) return std::nullopt;
    if (rounding == Rounding::HalfAway && rest.isHalfOf(divisor)) *result = *result + 1;
    return (left < 0) == (right < 0) ? *result : -*result;
}

std::optional<Wide> quotientWith(Wide left, int shift, Wide right) {
    LongNumber dividend(magnitude(left));
    LongNumber divisor(magnitude(right));
    for (int i = 0; i < shift; ++i)
        dividend.multiply(10);
    for (int i = shift; i < 0; ++i)
        divisor.multiply(10);
    const auto result = dividend.dividedBy(divisor).first.value();
    if (!result) return std::nullopt;
    return (left < 0) == (right < 0) ? *result : -*result;
}

std::optional<Wide> multiply(Wide left, Wide right) {
    Wide result = 0;
    if (multiplyOverflows(left, right, result)) return std::nullopt;
    return result;
}

std::optional<std::int64_t> narrow(Wide value) {
    if (value < kMinNarrow || value > kMaxNarrow) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::optional<ScaledNumber> parseScaled(std::string_view text) {
    ScaledNumber result;
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    bool point = false;
    bool digits = false;
    for (const char c : text) {
        if (c == '.' && !point) {
            point = true;
            continue;
        }
        if (!isAsciiDigit(c)) return std::nullopt;
        digits = true;
        const auto shifted = multiply(result.value, 10);
        if (!shifted || addOverflows(*shifted, c - '0', result.value)) return std::nullopt;
        if (point) ++result.scale;
    }
    if (!digits) return std::nullopt;
    if (negative) result.value = -result.value;
    return result;
}

std::string scaledText(Wide value, int scale) {
    if (const auto small = narrow(value)) {
        return std::string(plain::ScaledText(*small, static_cast<std::size_t>(scale)).view());
    }
    std::string digits;
    for (Wide rest = value; rest != 0; rest = rest / 10) {
        const auto digit = static_cast<int>(static_cast<std::int64_t>(rest % 10));
        digits += static_cast<char>('0' + std::abs(digit));
    }
    const auto decimals = static_cast<std::size_t>(scale);
    if (digits.size() <= decimals) digits.resize(decimals + 1, '0');
    std::ranges::reverse(digits);
    if (decimals > 0) digits.insert(digits.size() - decimals, 1, '.');
    return value < 0 ? "-" + digits : digits;
}

Wide farthest(bool negative) {
    const Wide most = powerOfTen(kMaxPower) + (powerOfTen(kMaxPower) / 2);
    return negative ? -most : most;
}

Blob wideBytes(Wide value) {
    constexpr int kWord = 64;
    constexpr int kByteBits = 8;
    constexpr std::size_t kBytes = 8;
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    const auto high = static_cast<std::uint64_t>(value >> kWord) ^ kSign;
    const auto low = static_cast<std::uint64_t>(value);
    std::string bytes(2 * kBytes, '\0');
    for (std::size_t i = 0; i < kBytes; ++i) {
        const auto shift = kByteBits * (kBytes - 1 - i);
        bytes[i] = static_cast<char>(high >> shift & 0xFFU);
        bytes[kBytes + i] = static_cast<char>(low >> shift & 0xFFU);
    }
    return {std::move(bytes)};
}

Wide wideFromBytes(std::string_view bytes) {
    constexpr int kWord = 64;
    constexpr int kByteBits = 8;
    constexpr std::size_t kBytes = 8;
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    if (bytes.size() != 2 * kBytes) return 0;
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    for (std::size_t i = 0; i < kBytes; ++i) {
        high = high << kByteBits | static_cast<unsigned char>(bytes[i]);
        low = low << kByteBits | static_cast<unsigned char>(bytes[kBytes + i]);
    }
    return (Wide{static_cast<std::int64_t>(high ^ kSign)} << kWord) | Wide{low};
}

Wide exactOf(const Value& value) {
    if (const auto* blob = std::get_if<Blob>(&value)) return wideFromBytes(blob->bytes);
    return std::get<std::int64_t>(value);
}

Value exactValue(Wide value, const tsql::TypeSpec& type) {
    if (tsql::isWideDecimal(type)) return wideBytes(value);
    return static_cast<std::int64_t>(value);
}

double scaledToDouble(Wide value, int scale) {
    // Reading the decimal text rounds once; dividing two doubles could round twice.
    return plain::readReal(scaledText(value, scale))->value;
}

}  // namespace kap::engine
