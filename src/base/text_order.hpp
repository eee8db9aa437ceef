#pragma once

#include <compare>
#include <string_view>

namespace kap {

// The text without blanks (U+0020) at its end.
[[nodiscard]] std::string_view withoutTrailingBlanks(std::string_view text);

// The order of texts in the database and in recordsets, for UTF-8: case and trailing blanks do not
// count; accents keep words apart, but only after the base letters have been compared, so that "è"
// stands after "e" and before "f". Signs come before digits and digits before letters.
//
// The order is the same on every machine and in every locale: a file's indexes depend on it.
// Bytes that are not UTF-8 are compared as signs of their own.
[[nodiscard]] std::weak_ordering compareTexts(std::string_view left,
                                              std::string_view right) noexcept;

}  // namespace kap
