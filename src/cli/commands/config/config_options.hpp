#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil config` with its options.
[[nodiscard]] Command configOptions();

}  // namespace kap::cli
