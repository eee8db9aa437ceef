#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "data/driver.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "tsql/server_error.hpp"

// The one place where the errors of SQLite and of the dialect become what clients see: the server's
// number and words, the data-access code that clients compare, and the SQLSTATE.
namespace kap::engine {

// The source of the driver's errors.
inline constexpr const char16_t* kErrorSource = u"KapLocal";

// The database that an error speaks of.
struct DatabasePlace {
    std::string name;  // the file as people see it, or ":memory:..."
    std::chrono::seconds lockTimeout{0};
};

// What was being done when SQLite refused; constraint errors name it.
struct WriteContext {
    std::string verb;     // "INSERT" or "UPDATE"; empty when nothing was written
    std::string table;    // the stored name of the table written
    std::string keyName;  // of the key that was violated; empty: as the table's keys are named
    std::vector<std::string> columns = {};  // that an UPDATE assigns
    std::string shownTable = {};            // with its schema; empty: as `table`
    std::string database = {};              // the name that it goes by; empty: not known
};

// An error or message with the server's number, as clients see it.
[[nodiscard]] ado::ServerMessage serverMessage(const tsql::ServerError& error);
[[nodiscard]] ado::DriverError driverError(const tsql::ServerError& error);

// The time that a request was given has passed; it was cancelled.
[[nodiscard]] ado::ServerMessage timeoutMessage();
[[nodiscard]] ado::ServerMessage cancelMessage();

// A failure of SQLite in the server's words: constraints, full disk, locks, damage.
[[nodiscard]] tsql::ServerError serverError(const SqliteError& error, const DatabasePlace& place,
                                            const WriteContext& context = {});

// The columns that SQLite names in the message of a violated constraint.
[[nodiscard]] std::vector<std::string> violatedColumns(const SqliteError& error,
                                                       std::string_view table);

// A database that could not be opened: why, as a part of a sentence ("it is a directory").
[[nodiscard]] ado::DriverError openError(const DatabasePlace& place, const std::string& reason);
[[nodiscard]] ado::DriverError openError(const SqliteError& error, const DatabasePlace& place);

// A change of one row whose criteria fit several.
[[nodiscard]] ado::DriverError tooManyRows();

}  // namespace kap::engine
