#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil batch` with its options.
[[nodiscard]] Command batchOptions();

}  // namespace kap::cli
