#pragma once

#include <kaputil/frame/variant.hpp>

namespace kap {

// The host's local date and time.
[[nodiscard]] Date localNow();

}  // namespace kap
