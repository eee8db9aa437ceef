#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil call` with its options.
[[nodiscard]] Command callOptions();

}  // namespace kap::cli
