#pragma once

#include <chrono>

#include <kaputil/automation/variant.hpp>

namespace kap {

// The host's local date and time.
[[nodiscard]] Date localNow();

// An instant as the host's local date and time, to the second.
[[nodiscard]] Date localTime(std::chrono::system_clock::time_point instant);

}  // namespace kap
