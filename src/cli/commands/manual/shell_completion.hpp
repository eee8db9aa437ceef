#pragma once

#include <string>
#include <vector>

#include "cli/command.hpp"

namespace kap::cli {

// The scripts that complete commands, actions, options and the texts that these take.
[[nodiscard]] std::string zshCompletion(const std::vector<CommandDescription>& commands);
[[nodiscard]] std::string fishCompletion(const std::vector<CommandDescription>& commands);

}  // namespace kap::cli
