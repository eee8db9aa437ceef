#pragma once

#include <optional>

#include <kaputil/automation/decimal.hpp>

// Arithmetic of exact decimals.
//
// A result keeps every digit that 96 bits and 28 decimals can hold; the rest is rounded off half to
// even. nullopt when its whole part does not fit.
namespace kap::decimal {

[[nodiscard]] std::optional<Decimal> add(const Decimal& left, const Decimal& right);
[[nodiscard]] std::optional<Decimal> multiply(const Decimal& left, const Decimal& right);

// The quotient, without zeros at its end. The divisor is not zero.
[[nodiscard]] std::optional<Decimal> divide(const Decimal& left, const Decimal& right);

[[nodiscard]] Decimal negate(const Decimal& value);

// Negative, zero or positive as `left` is less than, equal to or greater than `right`.
[[nodiscard]] int compare(const Decimal& left, const Decimal& right);

}  // namespace kap::decimal
