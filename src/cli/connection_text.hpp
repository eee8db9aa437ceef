#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

// The database that a command was given: a connection string, a file, or a name that the user has
// given one of them.
namespace kap::cli {

// What a command does with a database. One that only reads needs it to be there, and so does one
// that changes what is in it: only what can make tables may make a file.
enum class Access : std::uint8_t { Reading, Changing, Making };

// The connection string that `given` means, without a login that is not in it:
//
//     Provider=KapLocal;...    is one already
//     vendite                  a name of the user's list of connections
//     azienda.db, :memory:     an embedded database
//     (empty)                  what the variable KAPUTIL_CONNECTION says
//
// Throws UsageError when there is none, and for a list of connections that cannot be used.
[[nodiscard]] std::string connectionTextOf(const std::string& given);

// The names of the user's list of connections, in its order.
[[nodiscard]] std::vector<std::string> connectionNames();

// Opens it. Where the string names a user and no password, that is asked for: see login.hpp. Raises
// the database's errors; throws UsageError as connectionTextOf().
void openDatabase(ado::Connection& connection, const std::string& given, Access access);

// The embedded database's file, empty when the string leads elsewhere or into memory.
[[nodiscard]] std::string databaseFile(const std::string& connectionString);

}  // namespace kap::cli
