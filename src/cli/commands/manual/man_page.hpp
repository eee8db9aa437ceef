#pragma once

#include <string>
#include <vector>

#include "cli/command.hpp"

namespace kap::cli {

// The page on the command line as man reads it, and the one on a command with its actions.
[[nodiscard]] std::string manPage(const std::vector<CommandDescription>& commands);
[[nodiscard]] std::string manPage(const CommandDescription& command);

}  // namespace kap::cli
