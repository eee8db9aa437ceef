#pragma once

#include <string_view>

#include "tsql/syntax.hpp"

namespace kap::engine {

// Whether the server has a function of this name (case ignored). One that it has and that is not
// here is refused by its name; any other is a mistake of the program's.
[[nodiscard]] bool isServerFunction(std::string_view name);

// The same of a view of the server's own schema, sys.name.
[[nodiscard]] bool isServerView(const tsql::ObjectName& name);

}  // namespace kap::engine
