#pragma once

#include <optional>
#include <string_view>

#include <kaputil/automation/variant.hpp>

namespace kap::cli {

// The value that a word stands for: a number, a date between '#', or one of the words true, false,
// null, empty and missing in whatever case. nullopt for every other word, which is a text.
//
// A whole number is an Integer where it fits, else a Long, else a Double; one with a point or an
// exponent is a Double. Digits behind a leading zero are no number but a code, which would lose it.
// Throws UsageError for a number that is out of range or a date that does not exist.
[[nodiscard]] std::optional<Variant> readLiteral(std::string_view word);

}  // namespace kap::cli
