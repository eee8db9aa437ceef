#pragma once

#include <string>
#include <string_view>

namespace kap::engine {

// A statement that answers the same with its deepest parts named ahead of it, as common tables.
//
// SQLite's parser has room for a hundred symbols that wait for what follows them, which some thirty
// calls within each other take. Queries, calls and bracketed expressions that are deep become
// "(SELECT * FROM name)", and SQLite puts what the name stands for back in its place when it
// resolves the statement, with the columns of the queries around it in sight and as lazily as
// before.
//
// `sql` is one statement. The result is empty where nothing of it can be named so: definitions,
// whose expressions may hold no queries, and what counts rows or calls (aggregates, windows, random
// numbers).
[[nodiscard]] std::string flattened(std::string_view sql);

}  // namespace kap::engine
