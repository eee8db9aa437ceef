#pragma once

#include <string_view>

#include "tsql/server_error.hpp"

namespace kap::engine {

// What SQLite refused to prepare or to run, as the server would say it: a limit of SQLite's by what
// was too much, anything else by the server's word for a statement that nobody can run. SQLite's
// own words speak of the text that a statement was translated to, which its writer has never seen.
[[nodiscard]] tsql::ServerError refusedBySqlite(std::string_view message);

// Whether SQLite has found an expression nested beyond its limit, which of a stored one it says as
// if the file were damaged.
[[nodiscard]] bool isTooDeep(std::string_view message);

}  // namespace kap::engine
