#pragma once

#include "cli/command.hpp"

namespace kap::cli {

// `kaputil export` with its options.
[[nodiscard]] Command exportOptions();

}  // namespace kap::cli
