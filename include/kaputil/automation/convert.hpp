#pragma once

#include <cstdint>
#include <string_view>

#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Conversions between the automation types, under the user's locale
// (<kaputil/automation/locale.hpp>).
//
// Empty converts to zero, the empty text or the date origin; Null raises 94 (invalid use of Null);
// a text that is no number or date raises 13 (type mismatch), as do arrays; a value outside the
// target's range raises 6 (overflow); an object converts through its default member, and an unset
// one raises 91. Whole-number targets round to nearest, ties to even.
namespace kap::convert {

[[nodiscard]] KAPUTIL_EXPORT String toString(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT bool toBoolean(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT std::uint8_t toByte(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT std::int16_t toInteger(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT std::int32_t toLong(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT float toSingle(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT double toDouble(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT Currency toCurrency(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT Decimal toDecimal(const Variant& value);
[[nodiscard]] KAPUTIL_EXPORT Date toDate(const Variant& value);

// The value itself, or what an object stands for: the value of its default member, through any
// number of objects.
[[nodiscard]] KAPUTIL_EXPORT Variant plainValue(const Variant& value);

// The value as a Variant of exactly `type`, by the functions above.
[[nodiscard]] KAPUTIL_EXPORT Variant changeType(const Variant& value, VarType type);

// Whether the value is a number or converts to one: true for numbers, Booleans, Empty and texts
// that read as a number; false for Null, dates and everything else.
[[nodiscard]] KAPUTIL_EXPORT bool isNumeric(const Variant& value);

// Whether the value is a date or a text that reads as one.
[[nodiscard]] KAPUTIL_EXPORT bool isDate(const Variant& value);

// The number at the start of a text, whatever the locale: blanks are skipped, then an optional
// sign, digits, '.' as the only decimal point and an exponent are read up to the first character
// that cannot continue a number. Nothing readable gives 0. "&H" and "&O" read hexadecimal and
// octal.
[[nodiscard]] KAPUTIL_EXPORT double leadingNumber(std::u16string_view text);

}  // namespace kap::convert
