#pragma once

#include <string>
#include <vector>

namespace kap::cli {

// Reads the arguments, runs the command that they name, and gives back the exit code.
[[nodiscard]] int runCommandLine(std::vector<std::string> arguments);

}  // namespace kap::cli
