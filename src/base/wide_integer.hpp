#pragma once

#include <bit>
#include <cmath>
#include <compare>
#include <concepts>
#include <cstdint>
#include <utility>

namespace kap {

// A signed whole number of 128 bits in two words, for compilers that have none of their own. It
// computes and wraps as theirs do; division by zero is not allowed.
class WideInteger {
public:
    constexpr WideInteger() = default;
    template <std::integral T>
    constexpr WideInteger(T value)
        : low_(static_cast<std::uint64_t>(value)), high_(std::cmp_less(value, 0) ? kAllOnes : 0) {}

    template <std::integral T>
    explicit constexpr operator T() const {
        return static_cast<T>(low_);
    }

    // The nearest one.
    explicit operator double() const {
        const WideInteger whole = magnitude();
        // Of more than one word the upper bits are enough, and one that says whether more follows.
        const auto lost = static_cast<int>(std::bit_width(whole.high_));
        std::uint64_t upper = (whole >> lost).low_;
        if (whole.isNegative()) {
            upper = whole.high_;  // the least number, which is its own magnitude
        }
        if (lost > 0 && (whole << (2 * kWord - lost)) != 0) {
            upper |= 1;
        }
        const double value = std::ldexp(static_cast<double>(upper), lost);
        return isNegative() ? -value : value;
    }

    friend constexpr bool operator==(WideInteger left, WideInteger right) = default;
    friend constexpr std::strong_ordering operator<=>(WideInteger left, WideInteger right) {
        const auto high =
            static_cast<std::int64_t>(left.high_) <=> static_cast<std::int64_t>(right.high_);
        return std::is_neq(high) ? high : left.low_ <=> right.low_;
    }

    friend constexpr WideInteger operator+(WideInteger left, WideInteger right) {
        WideInteger sum;
        sum.low_ = left.low_ + right.low_;
        sum.high_ = left.high_ + right.high_ + (sum.low_ < left.low_ ? 1 : 0);
        return sum;
    }
    constexpr WideInteger operator-() const {
        WideInteger inverted;
        inverted.low_ = ~low_;
        inverted.high_ = ~high_;
        return inverted + 1;
    }
    friend constexpr WideInteger operator-(WideInteger left, WideInteger right) {
        return left + -right;
    }
    friend constexpr WideInteger operator*(WideInteger left, WideInteger right) {
        WideInteger product = longProduct(left.low_, right.low_);
        product.high_ += left.high_ * right.low_ + left.low_ * right.high_;
        return product;
    }
    friend constexpr WideInteger operator/(WideInteger left, WideInteger right) {
        WideInteger unused;
        const WideInteger quotient = divide(left.magnitude(), right.magnitude(), unused);
        return left.isNegative() == right.isNegative() ? quotient : -quotient;
    }
    friend constexpr WideInteger operator%(WideInteger left, WideInteger right) {
        WideInteger remainder;
        divide(left.magnitude(), right.magnitude(), remainder);
        return left.isNegative() ? -remainder : remainder;
    }
    friend constexpr WideInteger operator|(WideInteger left, WideInteger right) {
        left.low_ |= right.low_;
        left.high_ |= right.high_;
        return left;
    }
    // By 0 to 127 bits.
    friend constexpr WideInteger operator<<(WideInteger value, int bits) {
        WideInteger moved;
        if (bits >= kWord) {
            moved.high_ = value.low_ << (bits - kWord);
        } else if (bits > 0) {
            moved.high_ = value.high_ << bits | value.low_ >> (kWord - bits);
            moved.low_ = value.low_ << bits;
        } else {
            moved = value;
        }
        return moved;
    }
    friend constexpr WideInteger operator>>(WideInteger value, int bits) {
        const auto high = static_cast<std::int64_t>(value.high_);
        WideInteger moved;
        if (bits >= kWord) {
            moved.low_ = static_cast<std::uint64_t>(high >> (bits - kWord));
            moved.high_ = high < 0 ? kAllOnes : 0;
        } else if (bits > 0) {
            moved.low_ = value.low_ >> bits | value.high_ << (kWord - bits);
            moved.high_ = static_cast<std::uint64_t>(high >> bits);
        } else {
            moved = value;
        }
        return moved;
    }
    constexpr WideInteger& operator*=(WideInteger factor) { return *this = *this * factor; }

    // left + right and left * right; true when it does not fit and `result` has wrapped.
    [[nodiscard]] static constexpr bool addOverflows(WideInteger left, WideInteger right,
                                                     WideInteger& result) {
        result = left + right;
        return left.isNegative() == right.isNegative() && result.isNegative() != left.isNegative();
    }
    [[nodiscard]] static constexpr bool multiplyOverflows(WideInteger left, WideInteger right,
                                                          WideInteger& result) {
        result = left * right;
        if (left == 0 || right == 0) {
            return false;
        }
        // Taken apart again, a product that has wrapped gives other factors. The least number
        // cannot be taken apart by -1.
        const WideInteger least = WideInteger(1) << (2 * kWord - 1);
        if ((left == -1 && right == least) || (right == -1 && left == least)) {
            return true;
        }
        return result / right != left || result % right != 0;
    }

private:
    static constexpr int kWord = 64;
    static constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};

    [[nodiscard]] constexpr bool isNegative() const { return static_cast<std::int64_t>(high_) < 0; }
    [[nodiscard]] constexpr WideInteger magnitude() const { return isNegative() ? -*this : *this; }

    // The whole product of two words.
    static constexpr WideInteger longProduct(std::uint64_t left, std::uint64_t right) {
        constexpr int kHalf = 32;
        constexpr std::uint64_t kMask = 0xFFFFFFFF;
        const std::uint64_t low = (left & kMask) * (right & kMask);
        const std::uint64_t middle = (left >> kHalf) * (right & kMask) + (low >> kHalf);
        const std::uint64_t other = (left & kMask) * (right >> kHalf) + (middle & kMask);
        WideInteger product;
        product.low_ = other << kHalf | (low & kMask);
        product.high_ = (left >> kHalf) * (right >> kHalf) + (middle >> kHalf) + (other >> kHalf);
        return product;
    }

    // Both numbers taken as unsigned, bit by bit unless one word is enough. The result is the
    // quotient.
    static constexpr WideInteger divide(WideInteger left, WideInteger right,
                                        WideInteger& remainder) {
        if (left.high_ == 0 && right.high_ == 0) {
            remainder = left.low_ % right.low_;
            return left.low_ / right.low_;
        }
        WideInteger quotient;
        WideInteger rest;
        for (int bit = 2 * kWord - 1; bit >= 0; --bit) {
            const bool carried = rest.isNegative();
            const std::uint64_t word = bit >= kWord ? left.high_ : left.low_;
            rest = rest << 1 | (word >> (bit % kWord) & 1);
            if (carried || rest.high_ > right.high_ ||
                (rest.high_ == right.high_ && rest.low_ >= right.low_)) {
                rest = rest - right;
                quotient = quotient | (WideInteger(1) << bit);
            }
        }
        remainder = rest;
        return quotient;
    }

    std::uint64_t low_ = 0;
    std::uint64_t high_ = 0;
};

}  // namespace kap
