#pragma once

#include <compare>
#include <string_view>

namespace kap {

// The text without blanks (U+0020) at its end.
[[nodiscard]] std::string_view withoutTrailingBlanks(std::string_view text);

// The order of texts in the database and in recordsets, for UTF-8: case and trailing blanks do not
// count; accents keep words apart, but only after the base letters have been compared, so that "è"
// stands after "e" and before "f". Signs come before digits and digits before letters. Apostrophes
// and hyphens count last, when nothing else tells two texts apart ("Dabene" stands before
// "D'Amico", "coop" before "co-op"), and ß, æ, œ and þ are the two letters that they stand for.
//
// The order is the same on every machine and in every locale: a file's indexes depend on it.
// Bytes that are not UTF-8 are compared as signs of their own.
[[nodiscard]] std::weak_ordering compareTexts(std::string_view left,
                                              std::string_view right) noexcept;

// The order above has this number; files say by which one their indexes were made.
inline constexpr int kTextOrder = 1;

// Order 0, in which apostrophes and hyphens are signs like all others and every letter is one.
[[nodiscard]] std::weak_ordering compareTextsBySigns(std::string_view left,
                                                     std::string_view right) noexcept;

// What tells texts apart where it is not the order above.
struct TextMatching {
    bool cases = false;
    bool accents = true;
    bool binary = false;  // the code points alone
};

// The order above without accents, or with case: a small letter stands before its capital where
// nothing else tells two texts apart. Trailing blanks count in none of them.
[[nodiscard]] std::weak_ordering compareTextsAs(std::string_view left, std::string_view right,
                                                TextMatching matching) noexcept;

// A letter without its accent; any other unit as it is.
[[nodiscard]] char16_t withoutMarks(char16_t unit) noexcept;

}  // namespace kap
