#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace kap::cli {

// What a connection string leads to, as people call it: the file of an embedded database, or server
// and database; never a user or a password.
[[nodiscard]] std::string databaseName(std::string_view connectionString);

// Whether a text is a connection string: keys and values, with '=' between.
[[nodiscard]] bool isConnectionString(std::string_view text);

// The value of the first of its keys that has one of these names.
[[nodiscard]] std::optional<std::string> keyOf(std::string_view connectionString,
                                               std::initializer_list<std::string_view> names);

// The Data Source of an embedded database, empty for any other provider.
[[nodiscard]] std::string embeddedSource(std::string_view connectionString);

}  // namespace kap::cli
