#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/command.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// The page on the command line as man reads it, and the one on a command with its actions.
[[nodiscard]] std::string manPage(const std::vector<CommandDescription>& commands,
                                  Language language);
[[nodiscard]] std::string manPage(const CommandDescription& command, Language language);

// A text in which nothing is a request: those begin a line, or follow a backslash.
[[nodiscard]] std::string roff(std::string_view text);

}  // namespace kap::cli
