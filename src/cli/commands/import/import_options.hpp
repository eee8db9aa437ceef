#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil import` with its options.
[[nodiscard]] CommandDescription importOptions();

}  // namespace kap::cli
