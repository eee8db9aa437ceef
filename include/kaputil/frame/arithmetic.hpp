#pragma once

#include <optional>

#include <kaputil/frame/variant.hpp>

// Arithmetic between Variants, as the runtime does it.
//
// The result has the wider of the operands' types; whole numbers that outgrow theirs go on in the
// next wider one (Byte, Integer, Long, Double), a Decimal that outgrows its 96 bits in Double.
// Empty counts as 0, True as -1, a text as the Double it reads as under the user's locale, an
// object as the value of its default member. Null with anything gives Null.
//
// Raises 6 (overflow), 11 (division by zero), 13 (type mismatch: a text that is no number, an
// array), 91 (an unset object).
namespace kap::arithmetic {

[[nodiscard]] Variant add(const Variant& left, const Variant& right);
[[nodiscard]] Variant subtract(const Variant& left, const Variant& right);
[[nodiscard]] Variant multiply(const Variant& left, const Variant& right);

// The quotient: Double, or Single of operands no wider than that, or Decimal when one is Decimal.
[[nodiscard]] Variant divide(const Variant& left, const Variant& right);

// The quotient of both operands rounded to whole numbers, and what it leaves.
[[nodiscard]] Variant integerDivide(const Variant& left, const Variant& right);
[[nodiscard]] Variant modulo(const Variant& left, const Variant& right);

[[nodiscard]] Variant power(const Variant& base, const Variant& exponent);
[[nodiscard]] Variant negate(const Variant& value);

// `add`, except that two texts are joined.
[[nodiscard]] Variant plus(const Variant& left, const Variant& right);

// Joins the texts of both; Null counts as empty text unless both are Null.
[[nodiscard]] Variant concatenate(const Variant& left, const Variant& right);

// Negative, zero or positive as `left` is less than, equal to or greater than `right`, by value
// when one of them is a number, a text then being read as one; nullopt when one of them is Null.
[[nodiscard]] std::optional<int> compare(const Variant& left, const Variant& right);

}  // namespace kap::arithmetic
