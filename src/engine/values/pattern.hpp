#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kap::engine {

// Whether a text matches a pattern of LIKE, ignoring case.
//
// `%` stands for any text, `_` for one code unit, `[a-z]` for one of a set, `[^a-z]` for one
// outside it. `escape`, one unit or 0, makes the unit after it stand for itself. Both are given
// folded (foldedUnits()). Blanks at the end of the text need no counterpart in the pattern.
[[nodiscard]] bool matchesPattern(std::u16string_view text, std::u16string_view pattern,
                                  char16_t escape = 0);

// Where the part of the text between the outer % of the pattern starts, from 1; 0 when there is
// none. Both are given folded.
[[nodiscard]] std::size_t patternPlace(std::u16string_view pattern, std::u16string_view text);

}  // namespace kap::engine
