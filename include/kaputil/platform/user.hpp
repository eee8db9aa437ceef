#pragma once

#include <optional>

#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

namespace kap::platform {

// The name under which the user logged on; nullopt when the host does not know one.
[[nodiscard]] KAPUTIL_EXPORT std::optional<String> userName();

}  // namespace kap::platform
