#pragma once

#include <string>

namespace kap::platform {

// A random identity, "f81d4fae-7dec-41d0-a765-00a0c91e6bf6" (version 4), which nobody else has.
[[nodiscard]] std::string randomUuid();

}  // namespace kap::platform
