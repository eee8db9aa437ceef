#pragma once

#include <chrono>

namespace kap::platform {

// Stops the calling thread for about this long.
void pause(std::chrono::milliseconds duration);

}  // namespace kap::platform
