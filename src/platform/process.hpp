#pragma once

#include <cstdint>
#include <string>

// What tells this process from others.
namespace kap::platform {

// The machine's name in UTF-8; empty when the host does not tell it.
[[nodiscard]] std::string machineName();

// The number that the host gives this process.
[[nodiscard]] std::int64_t processNumber();

}  // namespace kap::platform
