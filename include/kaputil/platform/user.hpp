#pragma once

#include <optional>

#include <kaputil/automation/string.hpp>

namespace kap::platform {

// The name under which the user logged on; nullopt when the host does not know one.
[[nodiscard]] std::optional<String> userName();

}  // namespace kap::platform
