#include "ado/embedded/connection.hpp"

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>

#include "ado/embedded/collation.hpp"
#include "ado/embedded/functions/registration.hpp"
#include "ado/embedded/key_names.hpp"

namespace kap::ado::embedded {
namespace {

namespace fs = std::filesystem;

fs::path pathOf(const std::string& source) {
    return fs::path(std::u8string(source.begin(), source.end()));
}

// SQLite says only that a file cannot be opened; the usual reasons are told apart beforehand.
void checkPlace(const Options& options) {
    const DatabasePlace place = options.place();
    if (options.source.find('\0') != std::string::npos) {
        throw openError(place, "its name holds a zero character");
    }
    std::error_code failure;
    const fs::path path = fs::absolute(pathOf(options.source), failure);
    const fs::file_status status = fs::status(path, failure);
    if (fs::is_directory(status)) {
        throw openError(place, "it is a directory");
    }
    if (fs::exists(status)) {
        return;
    }
    if (!path.parent_path().empty() && !fs::is_directory(path.parent_path(), failure)) {
        throw openError(place,
                        "the directory '" + path.parent_path().string() + "' does not exist");
    }
    if (options.readOnly && status.type() == fs::file_type::not_found) {
        throw openError(place, "the file does not exist, and Mode=Read does not make it");
    }
}

// Databases in memory live in a file system of SQLite's own, where connections of this process find
// one another by name.
std::string memoryName(const std::string& source) {
    constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
    std::string name = "file:/memory";
    for (const char letter : source.substr(std::string_view(":memory:").size())) {
        const auto byte = static_cast<unsigned char>(letter);
        name.push_back('%');
        name.push_back(kHexadecimal[byte >> 4]);
        name.push_back(kHexadecimal[byte & 0xFU]);
    }
    return name + "?vfs=memdb";
}

std::string fileName(const std::string& source) {
    // An absolute path cannot be taken for an address ("file:...").
    const std::u8string path = fs::absolute(pathOf(source)).u8string();
    return {path.begin(), path.end()};
}

std::optional<fs::path> writtenFile(const Options& options) {
    const bool writes = !options.inMemory() && !options.readOnly;
    return writes ? std::optional(fs::absolute(pathOf(options.source))) : std::nullopt;
}

Database open(const Options& options) {
    if (options.inMemory()) {
        return {memoryName(options.source),
                SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI};
    }
    checkPlace(options);
    try {
        return {fileName(options.source), options.readOnly
                                              ? SQLITE_OPEN_READONLY
                                              : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE};
    } catch (const SqliteError& error) {
        throw openError(error, options.place());
    }
}

const char* synchronousCommand(Synchronous synchronous) {
    constexpr std::array kCommands = {"PRAGMA synchronous = OFF", "PRAGMA synchronous = NORMAL",
                                      "PRAGMA synchronous = FULL"};
    return kCommands.at(static_cast<std::size_t>(synchronous));
}

}  // namespace

Connection::Connection(const Options& options)
    : place_(options.place()),
      lockWait_(writtenFile(options), options.lockTimeout),
      database_(open(options)) {
    lockWait_.install(handle());
    try {
        prepare(options);
    } catch (const SqliteError& error) {
        throw openError(error, place_);
    }
}

void Connection::prepare(const Options& options) {
    registerCollation(handle());
    registerFunctions(handle(), errorSlot_);
    // A misspelt name in double quotes must be an error, not a text.
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    const bool writesFile = !options.readOnly && !options.inMemory();
    if (writesFile) {
        requireWritable();
    }
    // Reads the file: what is no database is refused here and not at the first statement.
    PreparedStatement(handle(), "SELECT count(*) FROM main.sqlite_schema").run();
    if (writesFile) {
        useWriteAheadJournal(options);
    }
    database_.run(synchronousCommand(options.synchronous));
    database_.run("PRAGMA foreign_keys = ON");
}

void Connection::requireWritable() const {
    // SQLite silently opens for reading what it may not write.
    if (sqlite3_db_readonly(handle(), "main") == 1) {
        throw openError(place_, "the file is read-only; to read it, say Mode=Read");
    }
}

void Connection::useWriteAheadJournal(const Options& options) {
    // The change of journal needs the file for itself, and SQLite does not always wait for that.
    const auto deadline = std::chrono::steady_clock::now() + options.lockTimeout;
    while (true) {
        try {
            database_.run("PRAGMA journal_mode = WAL");
            return;
        } catch (const SqliteError& error) {
            if (error.primaryCode() != SQLITE_BUSY ||
                std::chrono::steady_clock::now() >= deadline) {
                throw;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

tsql::ServerError Connection::explain(const SqliteError& error, WriteContext context) {
    if (errorSlot_.error) {
        return *errorSlot_.error;
    }
    if (error.primaryCode() == SQLITE_CONSTRAINT) {
        context.keyName = violatedKey(error, context.table);
    }
    return serverError(error, place_, context);
}

std::string Connection::violatedKey(const SqliteError& error, const std::string& table) {
    PreparedStatement definition(handle(),
                                 "SELECT sql FROM main.sqlite_schema WHERE name = ?1 UNION ALL "
                                 "SELECT sql FROM temp.sqlite_schema WHERE name = ?1");
    definition.bind(1, std::string_view(table));
    if (!definition.step()) {
        return {};
    }
    return keyName(definition.text(0), violatedColumns(error, table));
}

}  // namespace kap::ado::embedded
