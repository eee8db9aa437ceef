#include "engine/values/exact.hpp"

#include <limits>

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

std::string scaledText(std::int64_t value, int scale) {
    return std::string(plain::ScaledText(value, static_cast<std::size_t>(scale)).view());
}

double scaledToDouble(std::int64_t value, int scale) {
    // Reading the decimal text rounds once; dividing two doubles could round twice.
    return plain::readReal(scaledText(value, scale))->value;
}

}  // namespace kap::engine
