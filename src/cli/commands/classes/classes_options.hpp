#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil classes` with its options.
[[nodiscard]] Command classesOptions();

}  // namespace kap::cli
