#pragma once

#include <string>
#include <string_view>
#include <vector>

// Names of classes and members as a user types them.
namespace kap::tools {

// Whether two names are the same, ignoring the case of their (ASCII) letters.
[[nodiscard]] bool sameName(std::string_view left, std::string_view right) noexcept;

// Those of `known` that somebody may have meant by `wanted`, the nearest first and three at most:
// names that begin like it or differ from it by a few letters.
[[nodiscard]] std::vector<std::string> nearestNames(std::string_view wanted,
                                                    const std::vector<std::string>& known);

// "; did you mean A, B or C?" of the nearest names, empty when there is none.
[[nodiscard]] std::string suggestion(std::string_view wanted,
                                     const std::vector<std::string>& known);

// Latin letters in lower case, all others as they are.
[[nodiscard]] std::string asciiLower(std::string_view text);

// The text without the blanks at its beginning and end.
[[nodiscard]] std::string_view trimmed(std::string_view text, std::string_view blanks);

}  // namespace kap::tools
