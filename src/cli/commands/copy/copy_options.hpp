#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil copy` with its options.
[[nodiscard]] CommandDescription copyOptions();

}  // namespace kap::cli
