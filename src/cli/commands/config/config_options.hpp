#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil config` with its options.
[[nodiscard]] CommandDescription configOptions();

}  // namespace kap::cli
