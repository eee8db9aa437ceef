#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil manual` and `kaputil completion` with their options.
[[nodiscard]] CommandDescription manualOptions();
[[nodiscard]] CommandDescription completionOptions();

}  // namespace kap::cli
