#include "engine/sqlite/server_errors.hpp"

#include <algorithm>
#include <string_view>
#include <system_error>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "data/sql_states.hpp"
#include "engine/sqlite/sqlite_refusals.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

using tsql::Message;

// "…constraint failed: T.C, T.D": what stands after the colon.
std::string_view failedColumns(std::string_view message) {
    const std::size_t colon = message.find(": ");
    return colon == std::string_view::npos ? std::string_view{} : message.substr(colon + 2);
}

// SQLite writes table.column; a name may hold points, so the table that is known is cut off.
std::string_view withoutTable(std::string_view column, std::string_view table) {
    if (column.size() > table.size() && column.starts_with(table) && column[table.size()] == '.') {
        return column.substr(table.size() + 1);
    }
    return column;
}

std::string tableOf(std::string_view columns, const WriteContext& context) {
    if (!context.table.empty()) {
        return context.table;
    }
    return std::string(columns.substr(0, columns.find('.')));
}

// With its database and owner; a table variable has none, and lies in a table with a longer name.
std::string fullName(const std::string& table, const WriteContext& context) {
    if (table.starts_with('@')) return table.substr(0, table.find('/'));
    if (table.starts_with('#')) return "tempdb.dbo." + table;
    return context.database.empty() ? table : context.database + "." + context.shownTable;
}

ServerError nullRefused(const SqliteError& error, const WriteContext& context) {
    const std::string_view failed = failedColumns(error.what());
    const std::string table = tableOf(failed, context);
    return {Message::NullRefused,
            {withoutTable(failed, table), fullName(table, context),
             context.verb.empty() ? "INSERT" : context.verb}};
}

ServerError duplicateKey(const SqliteError& error, const WriteContext& context) {
    const std::string table = tableOf(failedColumns(error.what()), context);
    const bool primary = error.code() != SQLITE_CONSTRAINT_UNIQUE;
    const std::string name =
        context.keyName.empty() ? (primary ? "PK_" : "UQ_") + table : context.keyName;
    return {Message::DuplicateKey,
            {primary ? "PRIMARY" : "UNIQUE", name,
             context.shownTable.empty() ? "dbo." + table : context.shownTable}};
}

ServerError constraintError(const SqliteError& error, const WriteContext& context) {
    switch (error.code()) {
        case SQLITE_CONSTRAINT_NOTNULL:
            return nullRefused(error, context);
        case SQLITE_CONSTRAINT_PRIMARYKEY:
        case SQLITE_CONSTRAINT_ROWID:
        case SQLITE_CONSTRAINT_UNIQUE:
            return duplicateKey(error, context);
        default:
            return {Message::UnnamedConflict, {error.what()}};
    }
}

std::string secondsText(std::chrono::seconds seconds) {
    return plain::text(seconds.count()) + (seconds.count() == 1 ? " second" : " seconds");
}

std::string systemReason(const SqliteError& error) {
    return error.systemError() == 0 ? std::string(error.what())
                                    : std::generic_category().message(error.systemError());
}

ServerError lockTimeout(const DatabasePlace& place) {
    return {Message::LockTimeout, {place.name, secondsText(place.lockTimeout)}};
}

ado::DriverError raised(ado::ServerMessage message) {
    return ado::DriverError({std::move(message)}, kErrorSource);
}

std::string openReason(const SqliteError& error) {
    switch (error.primaryCode()) {
        case SQLITE_NOTADB:
            return "the file is not a database";
        case SQLITE_CORRUPT:
            return "the file is damaged (" + std::string(error.what()) + ")";
        case SQLITE_FULL:
            return "the disk is full";
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return "the file or its directory cannot be written; for reading only, say Mode=Read";
        default:
            return systemReason(error);
    }
}

}  // namespace

ado::ServerMessage serverMessage(const ServerError& error) {
    if (error.severity() <= ado::ServerMessage::kInformation) {
        return {error.number(), 0, "01000", error.message(), error.line(), error.severity()};
    }
    const char* state = tsql::stateOf(error.number());
    return {error.number(), ado::numberOfState(state), state, error.message(),
            error.line(),   error.severity()};
}

ado::DriverError driverError(const ServerError& error) {
    return raised(serverMessage(error));
}

ado::ServerMessage timeoutMessage() {
    return {0, ado::errors::kTimeout, "HYT00", "Query timeout expired", 0};
}

ado::ServerMessage cancelMessage() {
    return {0, ado::errors::kOperationCancelled, "HY008",
            "Operation has been cancelled by the user.", 0};
}

ServerError serverError(const SqliteError& error, const DatabasePlace& place,
                        const WriteContext& context) {
    switch (error.primaryCode()) {
        case SQLITE_CONSTRAINT:
            return constraintError(error, context);
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return lockTimeout(place);
        case SQLITE_FULL:
            return {Message::DiskFull, {place.name}};
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            if (isTooDeep(error.what())) {
                return tsql::nestedTooDeeply(0);
            }
            return {Message::FileDamaged, {place.name, error.what()}};
        case SQLITE_READONLY:
            return {Message::DatabaseReadOnly, {place.name}};
        case SQLITE_IOERR:
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
            return {Message::InputOutputError, {place.name, systemReason(error)}};
        case SQLITE_NOMEM:
            return {Message::OutOfMemory};
        case SQLITE_AUTH:
            return tsql::outOfStack(0);
        case SQLITE_TOOBIG:
            return {Message::Truncated};
        case SQLITE_MISMATCH:
            return {Message::ColumnConversionFailed};
        default:
            return refusedBySqlite(error.what());
    }
}

std::vector<std::string> violatedColumns(const SqliteError& error, std::string_view table) {
    constexpr std::string_view kBetween = ", ";
    std::vector<std::string> columns;
    std::string_view rest = failedColumns(error.what());
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(kBetween), rest.size());
        columns.emplace_back(withoutTable(rest.substr(0, end), table));
        rest.remove_prefix(std::min(end + kBetween.size(), rest.size()));
    }
    return columns;
}

ado::DriverError openError(const DatabasePlace& place, const std::string& reason) {
    ado::ServerMessage message = serverMessage({Message::CannotOpenDatabase, {place.name, reason}});
    message.number = ado::errors::kLogin;
    return raised(std::move(message));
}

ado::DriverError openError(const SqliteError& error, const DatabasePlace& place) {
    if (error.primaryCode() == SQLITE_BUSY || error.primaryCode() == SQLITE_LOCKED) {
        return raised(serverMessage(lockTimeout(place)));
    }
    return openError(place, openReason(error));
}

ado::DriverError tooManyRows() {
    return raised({0, ado::errors::kUnspecified, "21000",
                   "Key column information is insufficient or incorrect. Too many rows were "
                   "affected by update.",
                   0});
}

}  // namespace kap::engine
