#pragma once

#include <cstdint>

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// Dates as users of Italian business programs type and read them. Texts are read under the user's
// locale; nothing here keeps state or shows a message.
namespace kap::util {

// The name of a month from 1 to 12: Italian for the code "ITA", French for "FRA", English for any
// other, in any case. Empty for any other number.
[[nodiscard]] KAPUTIL_EXPORT String NomeMese(std::int16_t nMese, const String& sLingua = u"ING");

// A date written out as in letters, day, month's name and year: "5 Marzo 2003 ". The blank at the
// end is part of it. Raises 13 for a text that is no date.
[[nodiscard]] KAPUTIL_EXPORT Variant ConvertiData(const String& sData,
                                                  const String& sLingua = u"ING");

// A date typed day first, with or without "/" ("25122003", "25/12/03", "25/12"), written by
// `sFormat`; empty when it is none or lies before 1753. Without a year it is this year; years 00 to
// 70 are 2000 to 2070, 71 to 99 are 1971 to 1999, unless the text is a date of the user's locale
// already. An empty `sFormat` becomes "dd/mm/yyyy" in the caller's variable. Raises 13 for a value
// without a text.
[[nodiscard]] KAPUTIL_EXPORT String kapControllaData(const Variant& valore,
                                                     ByRef<String> sFormat = u"dd/mm/yyyy");

}  // namespace kap::util
