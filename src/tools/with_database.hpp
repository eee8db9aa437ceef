#pragma once

#include <functional>
#include <string>

#include <kaputil/ado/connection.hpp>

namespace kap::tools {

// Opens a database and works on it. Errors go to standard error; the exit code is that of the work,
// or tells which of both failed.
[[nodiscard]] int withDatabase(const std::string& connectionString, bool json,
                               const std::function<int(ado::Connection&)>& work);

}  // namespace kap::tools
