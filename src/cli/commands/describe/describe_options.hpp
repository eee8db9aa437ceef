#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil describe` with its options.
[[nodiscard]] CommandDescription describeOptions();

}  // namespace kap::cli
