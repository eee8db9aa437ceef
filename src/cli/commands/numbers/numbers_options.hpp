#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil numbers` with its options.
[[nodiscard]] CommandDescription numbersOptions();

}  // namespace kap::cli
