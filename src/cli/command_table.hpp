#pragma once

#include <vector>

#include "cli/command.hpp"

namespace kap::cli {

// Every command, in the order of the help.
[[nodiscard]] std::vector<CommandDescription> allCommands();

}  // namespace kap::cli
