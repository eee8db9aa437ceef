#pragma once

#include <string_view>

#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

namespace kap::convert {

// The day on which weeks begin, in the runtime's numbers.
enum class FirstDay : unsigned char {
    System = 0,
    Sunday,
    Monday,
    Tuesday,
    Wednesday,
    Thursday,
    Friday,
    Saturday
};

// Which week is the first of a year: the one with 1 January, the first with at least four days in
// the year, or the first that lies wholly in it.
enum class FirstWeek : unsigned char { System = 0, Jan1 = 1, FourDays = 2, FullWeek = 3 };

// The value written by a format, as the runtime's formatting function does, under the user's
// locale. The format is a named one ("General Date", "Short Date", "Currency", "Yes/No", ...) or a
// text of format characters.
//
// Dates: d dd ddd dddd ddddd dddddd w ww m mm mmm mmmm q y yy yyyy h hh n nn s ss ttttt AM/PM am/pm
// A/P a/p AMPM c, where "/" and ":" are the locale's separators, and m or mm right after h or hh is
// the minute. Numbers: 0 # . , % E+ E- e+ e-, with up to four sections (positive; negative; zero;
// Null). Texts: @ & < > !. Elsewhere "\" takes the next character as it stands and double quotes a
// whole text. An empty format writes the value as text.
//
// Empty and Null give the empty text unless the format has a section for them. Raises 13 for a
// value without a text (an array), 5 for a format that is malformed.
[[nodiscard]] KAPUTIL_EXPORT String format(const Variant& value, std::u16string_view pattern,
                                           FirstDay firstDay = FirstDay::Sunday,
                                           FirstWeek firstWeek = FirstWeek::Jan1);

}  // namespace kap::convert
