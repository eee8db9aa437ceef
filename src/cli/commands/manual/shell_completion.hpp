#pragma once

#include <string>
#include <vector>

#include "cli/command.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// The scripts that complete commands, actions, options and the texts that these take.
[[nodiscard]] std::string zshCompletion(const std::vector<CommandDescription>& commands,
                                        Language language);
[[nodiscard]] std::string fishCompletion(const std::vector<CommandDescription>& commands,
                                         Language language);

}  // namespace kap::cli
