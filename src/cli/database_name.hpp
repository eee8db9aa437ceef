#pragma once

#include <string>
#include <string_view>

namespace kap::cli {

// What a connection string leads to, as people call it: the file of an embedded database, or server
// and database; never a user or a password.
[[nodiscard]] std::string databaseName(std::string_view connectionString);

}  // namespace kap::cli
