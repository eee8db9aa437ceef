#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil export` with its options.
[[nodiscard]] CommandDescription exportOptions();

}  // namespace kap::cli
