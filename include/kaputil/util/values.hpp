#pragma once

#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Testing, coercing and writing into SQL the values that come from forms and recordsets. Texts are
// read and written under the user's locale; an object stands for the value of its default member.
namespace kap::util {

// Whether a value is blank: Null, Empty, or a text of nothing but spaces. 0 and False are not.
// Raises 13 for a value without a text (an array, an object without a default member).
[[nodiscard]] KAPUTIL_EXPORT bool kapEmpty(const Variant& vValore);

// A value as the numeric type named, in any case: "Single", "Double", "Integer" (a Double read
// from the front of the value's text, where only '.' is a decimal point), "Numeric", "Decimal" and
// "Float" (the value itself, as it is); any other name is Single. What is no number is the Integer
// 0. Raises 6 when a number is too large for Single.
[[nodiscard]] KAPUTIL_EXPORT Variant kapVal(const Variant& vValore,
                                            const String& sDataType = u"Double");

// A text to stand between single quotes in SQL: each of its quotes doubled, the text otherwise as
// it is; empty when it is blank. The caller writes the quotes around it. Raises 13 as `kapEmpty`.
[[nodiscard]] KAPUTIL_EXPORT String kapApice(const Variant& sStringa);

// A date text, day first ("25/12/03" or "251203"), as "2003-12-25", without quotes; empty when it
// is no date. Day, month and year stand at fixed positions. Without a year it is this year; years
// 00 to 70 are 2000 to 2070, 71 to 99 are 1971 to 1999.
[[nodiscard]] KAPUTIL_EXPORT Variant DtoSQL(const Variant& valore);

// The 8 bytes of a record's row version, most significant first, as the decimal text of their
// number, which is never negative: a byte array's bytes, or the low bytes of a text's characters.
// Raises 5 when there are fewer than 8.
[[nodiscard]] KAPUTIL_EXPORT String TSToHex(const Variant& sBinRep);

}  // namespace kap::util
