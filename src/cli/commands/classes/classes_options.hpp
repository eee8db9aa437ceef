#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil classes` with its options.
[[nodiscard]] CommandDescription classesOptions();

}  // namespace kap::cli
