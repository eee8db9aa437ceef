#pragma once

#include <string_view>

#include "tsql/syntax.hpp"

namespace kap::engine {

// Whether the server has a function of this name (case ignored). One that it has and that is not
// here is refused by its name; any other is a mistake of the program's.
[[nodiscard]] bool isServerFunction(std::string_view name);

// The same of a view or a table of the server's own: sys.name, the standard's, the older ones, and
// those of its databases for jobs and backups.
[[nodiscard]] bool isServerView(const tsql::ObjectName& name);

// Error 40517 for column.nodes(...) and the like.
void refuseXmlMethod(const tsql::ObjectName& name);

}  // namespace kap::engine
