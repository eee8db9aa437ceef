#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/text_order.hpp"

// Lengths and positions in UTF-8 text counted as the server counts them: in UTF-16 code units.
//
// A position inside a pair of units counts as its start. Bytes that are not UTF-8 count one unit
// each.
namespace kap::engine {

// The number of code units.
[[nodiscard]] std::size_t unitLength(std::string_view text);

// The byte at which the unit of that index starts, or the text's size when it has fewer units.
[[nodiscard]] std::size_t unitOffset(std::string_view text, std::size_t index);

// `count` units from the unit `first` on, as far as there are.
[[nodiscard]] std::string_view unitSlice(std::string_view text, std::size_t first,
                                         std::size_t count);

// The text without blanks (U+0020) at its start.
[[nodiscard]] std::string_view withoutLeadingBlanks(std::string_view text);
[[nodiscard]] std::string_view withoutBlanks(std::string_view text);

// The text with blanks added up to `units`.
[[nodiscard]] std::string padded(std::string_view text, std::size_t units);

// The text as UTF-16, bytes that are not UTF-8 as U+FFFD.
[[nodiscard]] std::u16string toUnits(std::string_view text);
// UTF-16 as UTF-8, half pairs as U+FFFD.
[[nodiscard]] std::string fromUnits(std::u16string_view units);

// Case folded the way texts are compared; equal results mean equal but for case.
[[nodiscard]] std::u16string foldedUnits(std::string_view text);

}  // namespace kap::engine
