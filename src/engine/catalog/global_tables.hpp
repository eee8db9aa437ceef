#pragma once

#include <string_view>

namespace kap::engine {

// Whether a stored name is that of a global temporary table, which lies in the file and ends with
// the session that has made it.
[[nodiscard]] constexpr bool isGlobalTable(std::string_view name) {
    return name.starts_with("##");
}

}  // namespace kap::engine
