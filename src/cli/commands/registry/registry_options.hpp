#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil registry` with its options.
[[nodiscard]] Command registryOptions();

}  // namespace kap::cli
