#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil batch` with its options.
[[nodiscard]] CommandDescription batchOptions();

}  // namespace kap::cli
