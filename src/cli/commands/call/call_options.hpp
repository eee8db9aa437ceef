#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil call` with its options.
[[nodiscard]] CommandDescription callOptions();

}  // namespace kap::cli
