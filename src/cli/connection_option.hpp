#pragma once

#include <string>

#include "cli/command.hpp"

namespace kap::cli {

// "--connection DATABASE", which goes into `target`; empty: the variable KAPUTIL_CONNECTION says.
[[nodiscard]] Option connectionOption(std::string& target);

}  // namespace kap::cli
