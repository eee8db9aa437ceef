#pragma once

#include <string_view>

namespace kap::engine {

// Whether the server has a function of this name (case ignored). One that it has and that is not
// here is refused by its name; any other is a mistake of the program's.
[[nodiscard]] bool isServerFunction(std::string_view name);

}  // namespace kap::engine
