#pragma once

#include <functional>
#include <string>

#include <kaputil/ado/connection.hpp>

#include "cli/connection_text.hpp"

namespace kap::cli {

// Opens the database that a command was given and works on it. Errors go to standard error; the
// exit code is that of the work, or tells which of both failed.
[[nodiscard]] int withDatabase(const std::string& given, Access access, bool json,
                               const std::function<int(ado::Connection&)>& work);

}  // namespace kap::cli
