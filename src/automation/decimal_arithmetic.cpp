#include "automation/decimal_arithmetic.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace kap::decimal {
namespace {

// A whole number wide enough for the product of two magnitudes and for a magnitude moved by 28
// decimals, least significant word first.
using Wide = std::array<std::uint32_t, 7>;

Wide widen(const Decimal& value) {
    const auto magnitude = value.magnitude();
    Wide wide{};
    std::copy(magnitude.begin(), magnitude.end(), wide.begin());
    return wide;
}

void multiplyBy(Wide& value, std::uint32_t factor, std::uint32_t addend = 0) {
    std::uint64_t carry = addend;
    for (std::uint32_t& word : value) {
        const std::uint64_t part = std::uint64_t{word} * factor + carry;
        word = static_cast<std::uint32_t>(part);
        carry = part >> 32;
    }
}

std::uint32_t divideBy(Wide& value, std::uint32_t divisor) {
    std::uint64_t rest = 0;
    for (std::size_t i = value.size(); i-- > 0;) {
        const std::uint64_t part = (rest << 32) | value[i];
        value[i] = static_cast<std::uint32_t>(part / divisor);
        rest = part % divisor;
    }
    return static_cast<std::uint32_t>(rest);
}

void moveBy(Wide& value, int decimals) {
    for (int i = 0; i < decimals; ++i) {
        multiplyBy(value, 10);
    }
}

bool isZero(const Wide& value) {
    return value == Wide{};
}

bool fits(const Wide& value) {
    return std::all_of(value.begin() + 3, value.end(),
                       [](std::uint32_t word) { return word == 0; });
}

bool less(const Wide& left, const Wide& right) {
    return std::lexicographical_compare(left.rbegin(), left.rend(), right.rbegin(), right.rend());
}

void addTo(Wide& sum, const Wide& addend) {
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < sum.size(); ++i) {
        carry += std::uint64_t{sum[i]} + addend[i];
        sum[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
}

// `value` is not less than `subtrahend`.
void subtractFrom(Wide& value, const Wide& subtrahend) {
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const std::uint64_t part = std::uint64_t{value[i]} - subtrahend[i] - borrow;
        value[i] = static_cast<std::uint32_t>(part);
        borrow = (part >> 32) != 0 ? 1 : 0;
    }
}

// Drops digits from the end, half to even, until the value fits a Decimal. `sticky` says that
// digits which are not zero follow already.
std::optional<Decimal> narrow(Wide value, int scale, bool negative, bool sticky = false) {
    std::uint32_t last = 0;
    while (!fits(value) || scale > Decimal::kMaxScale) {
        if (scale == 0) {
            return std::nullopt;
        }
        sticky = sticky || last != 0;
        last = divideBy(value, 10);
        --scale;
    }
    const bool odd = (value[0] & 1U) != 0;
    if (last > 5 || (last == 5 && (sticky || odd))) {
        addTo(value, {1});
        if (!fits(value)) {
            return narrow(value, scale, negative);  // 2^96: one digit fewer
        }
    }
    return Decimal({value[0], value[1], value[2]}, scale, negative && !isZero(value));
}

// Both magnitudes with the same number of decimals.
struct Aligned {
    Wide left;
    Wide right;
    int scale;
};

Aligned align(const Decimal& left, const Decimal& right) {
    Aligned both{widen(left), widen(right), std::max(left.scale(), right.scale())};
    moveBy(both.left, both.scale - left.scale());
    moveBy(both.right, both.scale - right.scale());
    return both;
}

Wide product(const Wide& left, const Wide& right) {
    Wide result{};
    for (std::size_t i = 0; i < 3; ++i) {
        std::uint64_t carry = 0;
        for (std::size_t j = 0; j + i < result.size(); ++j) {
            carry += std::uint64_t{left[i]} * right[j] + result[i + j];
            result[i + j] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }
    return result;
}

// The next digit of a long division: how often the divisor goes into the rest, which loses it.
std::uint32_t takeDigit(Wide& rest, const Wide& divisor) {
    std::uint32_t digit = 0;
    while (!less(rest, divisor)) {
        subtractFrom(rest, divisor);
        ++digit;
    }
    return digit;
}

// Divides by school division, bit by bit; the rest stays in `value`.
Wide quotient(Wide& value, const Wide& divisor) {
    Wide result{};
    Wide rest{};
    for (std::size_t i = value.size() * 32; i-- > 0;) {
        multiplyBy(rest, 2, (value[i / 32] >> (i % 32)) & 1U);
        multiplyBy(result, 2, takeDigit(rest, divisor));
    }
    value = rest;
    return result;
}

Decimal withoutTrailingZeros(const Decimal& value) {
    Wide digits = widen(value);
    int scale = value.scale();
    for (Wide shorter = digits; scale > 0 && divideBy(shorter, 10) == 0; --scale) {
        digits = shorter;
    }
    return {{digits[0], digits[1], digits[2]}, scale, value.negative()};
}

}  // namespace

std::optional<Decimal> add(const Decimal& left, const Decimal& right) {
    Aligned both = align(left, right);
    if (left.negative() == right.negative()) {
        addTo(both.left, both.right);
        return narrow(both.left, both.scale, left.negative());
    }
    if (less(both.left, both.right)) {
        subtractFrom(both.right, both.left);
        return narrow(both.right, both.scale, right.negative());
    }
    subtractFrom(both.left, both.right);
    return narrow(both.left, both.scale, left.negative());
}

std::optional<Decimal> multiply(const Decimal& left, const Decimal& right) {
    return narrow(product(widen(left), widen(right)), left.scale() + right.scale(),
                  left.negative() != right.negative());
}

std::optional<Decimal> divide(const Decimal& left, const Decimal& right) {
    const Wide divisor = widen(right);
    Wide rest = widen(left);
    int scale = left.scale() - right.scale();
    if (scale < 0) {
        moveBy(rest, -scale);
        scale = 0;
    }
    Wide result = quotient(rest, divisor);
    // One digit more than a Decimal holds, for the rounding; `rest` tells whether others follow.
    while (!isZero(rest) && scale <= Decimal::kMaxScale && fits(result)) {
        multiplyBy(rest, 10);
        multiplyBy(result, 10, takeDigit(rest, divisor));
        ++scale;
    }
    const auto rounded = narrow(result, scale, left.negative() != right.negative(), !isZero(rest));
    return rounded ? std::optional(withoutTrailingZeros(*rounded)) : std::nullopt;
}

Decimal negate(const Decimal& value) {
    return {value.magnitude(), value.scale(), !value.negative() && !value.isZero()};
}

int compare(const Decimal& left, const Decimal& right) {
    const Aligned both = align(left, right);
    if (isZero(both.left) && isZero(both.right)) {
        return 0;
    }
    if (left.negative() != right.negative()) {
        return left.negative() ? -1 : 1;
    }
    if (both.left == both.right) {
        return 0;
    }
    return less(both.left, both.right) == left.negative() ? 1 : -1;
}

}  // namespace kap::decimal
