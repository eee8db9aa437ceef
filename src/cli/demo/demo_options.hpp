#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil demo` with its options.
[[nodiscard]] CommandDescription demoOptions();

}  // namespace kap::cli
