#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil registry` with its options.
[[nodiscard]] CommandDescription registryOptions();

}  // namespace kap::cli
