#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil sql` with its options.
[[nodiscard]] CommandDescription sqlOptions();

}  // namespace kap::cli
