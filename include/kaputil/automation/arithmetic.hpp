#pragma once

#include <optional>

#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Arithmetic between Variants, as the runtime does it.
//
// The result has the wider of the operands' types: Byte, Integer (Boolean and Empty count as one),
// Long, Single (Double when the other is Long), Double (a text counts as one), Currency, Date,
// Decimal. A whole number that outgrows its type goes on in the next wider one, at last in Double;
// a Single that does in Double. Null with anything gives Null; an object stands for the value of
// its default member; texts are read under the user's locale.
//
// Raises 6 (overflow), 11 (division by zero), 13 (type mismatch: a text that is no number, an
// array), 91 (an unset object).
namespace kap::arithmetic {

// The sum; of two texts, both joined. With a Date it is a Date.
[[nodiscard]] KAPUTIL_EXPORT Variant add(const Variant& left, const Variant& right);

// The difference; of two Dates it is a Double.
[[nodiscard]] KAPUTIL_EXPORT Variant subtract(const Variant& left, const Variant& right);

// The product; a Date in it counts as a Double, and Currency with a Single or a Double is Double.
[[nodiscard]] KAPUTIL_EXPORT Variant multiply(const Variant& left, const Variant& right);

// The quotient: Decimal when one operand is, Single when one is and none is wider, else Double.
// Zero by zero is an overflow.
[[nodiscard]] KAPUTIL_EXPORT Variant divide(const Variant& left, const Variant& right);

// The quotient, cut off to a whole number, of both operands rounded to whole numbers, and what it
// leaves: Byte, Integer or Long.
[[nodiscard]] KAPUTIL_EXPORT Variant integerDivide(const Variant& left, const Variant& right);
[[nodiscard]] KAPUTIL_EXPORT Variant modulo(const Variant& left, const Variant& right);

// A Double. Raises 5 where the power is no real number, as of a negative base and a fraction.
[[nodiscard]] KAPUTIL_EXPORT Variant power(const Variant& base, const Variant& exponent);
[[nodiscard]] KAPUTIL_EXPORT Variant negate(const Variant& value);

// Joins the texts of both; Null counts as empty text unless both are Null.
[[nodiscard]] KAPUTIL_EXPORT Variant concatenate(const Variant& left, const Variant& right);

// Negative, zero or positive as `left` is less than, equal to or greater than `right`; nullopt when
// one of them is Null. With a number on one side a text on the other is read as one; two texts are
// compared code unit by code unit, Empty then being the empty text.
[[nodiscard]] KAPUTIL_EXPORT std::optional<int> compare(const Variant& left, const Variant& right);

}  // namespace kap::arithmetic
