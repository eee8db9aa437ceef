#pragma once

#include <optional>
#include <string>

namespace kap::cli {

// Asks on the user's terminal, which does not show what is typed, wherever the standard input and
// output go; nullopt where there is no terminal, and when the line is broken off.
[[nodiscard]] std::optional<std::string> typedPassword(const std::string& question);

}  // namespace kap::cli
