#include "engine/sqlite/server_errors.hpp"

#include <algorithm>
#include <string_view>
#include <system_error>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "data/server_numbers.hpp"
#include "engine/sqlite/sqlite_refusals.hpp"

namespace kap::engine {
namespace {

using tsql::ServerError;

// The server's own numbers that this file makes.
constexpr int kNullRefused = 515;
constexpr int kConstraint = 547;
constexpr int kInputOutput = 823;
constexpr int kDamaged = 824;
constexpr int kDiskFull = 1101;
constexpr int kLockTimeout = 1222;
constexpr int kUniqueKey = 2627;
constexpr int kReadOnly = 3906;
constexpr int kCannotOpen = 4060;
constexpr int kOutOfMemory = 701;

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
    return context.database.empty() ? table : context.database + ".dbo." + table;
}

ServerError nullRefused(const SqliteError& error, const WriteContext& context) {
    const std::string_view failed = failedColumns(error.what());
    const std::string table = tableOf(failed, context);
    return {kNullRefused,
            "Cannot insert the value NULL into column '" +
                std::string(withoutTable(failed, table)) + "', table '" + fullName(table, context) +
                "'; column does not allow nulls. " +
                (context.verb.empty() ? "INSERT" : context.verb) + " fails.",
            0, 16, 2};
}

ServerError duplicateKey(const SqliteError& error, const WriteContext& context) {
    const std::string table = tableOf(failedColumns(error.what()), context);
    const bool primary = error.code() != SQLITE_CONSTRAINT_UNIQUE;
    const std::string name =
        context.keyName.empty() ? (primary ? "PK_" : "UQ_") + table : context.keyName;
    return {kUniqueKey,
            std::string("Violation of ") + (primary ? "PRIMARY" : "UNIQUE") + " KEY constraint '" +
                name + "'. Cannot insert duplicate key in object 'dbo." + table + "'.",
            0, 14, 1};
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
            return {kConstraint,
                    "The statement conflicted with a constraint of the database: " +
                        std::string(error.what()) + ".",
                    0, 16, 0};
    }
}

std::string secondsText(std::chrono::seconds seconds) {
    return plain::text(seconds.count()) + (seconds.count() == 1 ? " second" : " seconds");
}

std::string systemReason(const SqliteError& error) {
    return error.systemError() == 0 ? std::string(error.what())
                                    : std::generic_category().message(error.systemError());
}

std::string lockSentence(const DatabasePlace& place) {
    return "Lock request time out period exceeded: the database '" + place.name +
           "' was still locked by another connection after " + secondsText(place.lockTimeout) + ".";
}

ado::ServerMessage openMessage(std::int32_t number, int native, std::string state,
                               std::string text) {
    return {native, number, std::move(state), std::move(text)};
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
    // Everything that is not in the table is an error in the command's text.
    const ado::ServerNumber* known = ado::findServerNumber(error.number());
    return {error.number(),
            known == nullptr ? ado::errors::kCommandText : known->number,
            known == nullptr ? "42000" : known->state,
            error.message(),
            error.line(),
            error.severity()};
}

ado::DriverError driverError(const ServerError& error) {
    return raised(serverMessage(error));
}

ado::ServerMessage timeoutMessage() {
    return {0, ado::errors::kTimeout, "HYT00", "Query timeout expired", 0};
}

ErrorReach reachOf(int serverNumber) {
    switch (serverNumber) {
        // The statement could not be made sense of when its turn came, or what follows would find
        // another table than the one that it was to make.
        case 102:
        case 156:
        case 207:
        case 208:
        case 209:
        case 1087:
        case 2714:
        case 4104:
        case 4121:
        case 40517:
            return ErrorReach::Scope;
        // What a value cannot be turned into.
        case 241:
        case 242:
        case 244:
        case 245:
        case 248:
        case 8114:
        case 8169:
        // The trigger has ended the transaction itself, or left it with an error.
        case 3609:
        case 3616:
        // Nothing is left of the transaction in which it ran.
        case 3971:
        // What the file is written on has failed.
        case kInputOutput:
        case kDamaged:
        case kDiskFull:
        case kOutOfMemory:
            return ErrorReach::Transaction;
        // Calls within calls without end.
        case 217:
        case kLockTimeout:
            return ErrorReach::Batch;
        default:
            return ErrorReach::Statement;
    }
}

ServerError serverError(const SqliteError& error, const DatabasePlace& place,
                        const WriteContext& context) {
    const std::string database = "the database '" + place.name + "'";
    switch (error.primaryCode()) {
        case SQLITE_CONSTRAINT:
            return constraintError(error, context);
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return {kLockTimeout, lockSentence(place), 0, 16, 45};
        case SQLITE_FULL:
            return {kDiskFull,
                    "Could not write to " + database +
                        " because the disk is full. What the statement had written was undone.",
                    0, 17, 1};
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            if (isTooDeep(error.what())) {
                return tsql::nestedTooDeeply(0);
            }
            return {kDamaged,
                    "The file of " + database + " is damaged (" + error.what() +
                        "). Restore it from a copy.",
                    0, 24, 1};
        case SQLITE_READONLY:
            return {kReadOnly,
                    "Failed to update " + database + " because the database is read-only.", 0, 16,
                    1};
        case SQLITE_IOERR:
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
            return {kInputOutput,
                    "The operating system returned an error while reading or writing the file of " +
                        database + ": " + systemReason(error) + ".",
                    0, 24, 1};
        case SQLITE_NOMEM:
            return {kOutOfMemory, "There is insufficient system memory to run this query.", 0, 17,
                    1};
        case SQLITE_AUTH:
            return tsql::outOfStack(0);
        case SQLITE_TOOBIG:
            return {8152, "String or binary data would be truncated.", 0, 16, 1};
        case SQLITE_MISMATCH:
            return {245, "Conversion failed when converting a value to the type of its column.", 0,
                    16, 1};
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
    return raised(openMessage(ado::errors::kLogin, kCannotOpen, "08001",
                              "Cannot open the database '" + place.name + "': " + reason + "."));
}

ado::DriverError openError(const SqliteError& error, const DatabasePlace& place) {
    if (error.primaryCode() == SQLITE_BUSY || error.primaryCode() == SQLITE_LOCKED) {
        return raised(
            openMessage(ado::errors::kTimeout, kLockTimeout, "HYT00", lockSentence(place)));
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
