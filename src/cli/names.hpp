#pragma once

#include <string>
#include <string_view>
#include <vector>

// Names of classes and members as a user types them.
namespace kap::cli {

// Those of `known` that somebody may have meant by `wanted`, the nearest first and three at most:
// names that begin like it or differ from it by a few letters.
[[nodiscard]] std::vector<std::string> nearestNames(std::string_view wanted,
                                                    const std::vector<std::string>& known);

// "; did you mean A, B or C?" of the nearest names, empty when there is none.
[[nodiscard]] std::string suggestion(std::string_view wanted,
                                     const std::vector<std::string>& known);

}  // namespace kap::cli
