#include "engine/sqlite/file_connection.hpp"

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>

#include <kaputil/automation/plain_text.hpp>

#include "base/hexadecimal.hpp"
#include "base/text_order.hpp"
#include "engine/sqlite/collation.hpp"
#include "engine/sqlite/functions/registration.hpp"
#include "engine/sqlite/sqlite_stack.hpp"

namespace kap::engine {
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
    if (fs::exists(status) && !fs::is_regular_file(status)) {  // a pipe, a device
        throw openError(place, "it is no file");
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

// A text as it stands in one of SQLite's addresses.
std::string inAddress(std::string_view text) {
    std::string escaped;
    for (const char letter : text) {
        escaped += letter == '/' ? "/" : "%" + hex::ofBytes(std::string_view(&letter, 1));
    }
    return escaped;
}

// Databases in memory live in a file system of SQLite's own, where connections of this process find
// one another by name.
std::string memoryName(const std::string& source) {
    return "file:/memory" + inAddress(source.substr(std::string_view(":memory:").size())) +
           "?vfs=memdb";
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

// Whether a file that is only read can be, as it stands in its folder. SQLite makes files of its
// own beside it, which is not possible on a share for backups or on a disc.
bool canBeShared(const Database& database) {
    try {
        PreparedStatement(database.handle(), "SELECT count(*) FROM main.sqlite_schema").run();
        return true;
    } catch (const SqliteError& error) {
        return error.primaryCode() != SQLITE_CANTOPEN && error.primaryCode() != SQLITE_READONLY;
    }
}

// Who may not write the folder takes it that nobody does while he reads; isSound() tells whether
// that has come true.
Database openToRead(const Options& options) {
    const std::string name = fileName(options.source);
    Database database(name, SQLITE_OPEN_READONLY);
    if (canBeShared(database)) {
        return database;
    }
    std::error_code ignored;
    const auto journal = fs::file_size(pathOf(name + "-wal"), ignored);
    if (!ignored && journal > 0) {
        throw openError(options.place(),
                        "it has changes in its journal that only a program can take in that may "
                        "write its folder");
    }
    return {"file:" + inAddress(name) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI};
}

Database open(const Options& options) {
    if (options.inMemory()) {
        return {memoryName(options.source),
                SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI};
    }
    checkPlace(options);
    try {
        if (options.readOnly) {
            return openToRead(options);
        }
        return {fileName(options.source), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE};
    } catch (const SqliteError& error) {
        throw openError(error, options.place());
    }
}

// What a long transaction has made it grow to is given back when the journal is begun anew.
constexpr const char* kJournalLimit = "PRAGMA journal_size_limit = 67108864";

const char* synchronousCommand(Synchronous synchronous) {
    constexpr std::array kCommands = {"PRAGMA synchronous = OFF", "PRAGMA synchronous = NORMAL",
                                      "PRAGMA synchronous = FULL"};
    return kCommands.at(static_cast<std::size_t>(synchronous));
}

}  // namespace

FileConnection::FileConnection(const Options& options)
    : place_(options.place()),
      lockWait_(writtenFile(options), options.lockTimeout),
      checkpoints_(lockWait_),
      database_(open(options)) {
    lockWait_.install(handle());
    if (sqlite3_uri_boolean(sqlite3_db_filename(handle(), "main"), "immutable", 0) != 0) {
        unwritten_ = traces();
    }
    try {
        prepare(options);
    } catch (const SqliteError& error) {
        throw openError(error, place_);
    }
}

void FileConnection::prepare(const Options& options) {
    registerCollations(handle());
    registerFunctions(handle(), errorSlot_);
    watchStack(handle());
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
    if (!options.inMemory()) {
        noteJournal();
    }
    database_.run(synchronousCommand(options.synchronous));
    if (!options.inMemory()) {
        useTextOrder(writesFile);
    }
    database_.run("PRAGMA foreign_keys = ON");
}

// The indexes of a file that was made in another order of texts are made anew. Where that cannot
// be, because the file is only read or a key would then have a value twice, its order goes on.
void FileConnection::useTextOrder(bool writesFile) {
    if (!hasFormerTextOrder(handle())) {
        return;
    }
    if (!writesFile) {
        registerFormerTextOrder(handle());
        return;
    }
    database_.run("BEGIN IMMEDIATE");
    try {
        if (hasFormerTextOrder(handle())) {
            database_.run("REINDEX KAP_CI");
            database_.run(("PRAGMA main.user_version = " + plain::text(kTextOrder)).c_str());
        }
        database_.run("COMMIT");
    } catch (const SqliteError& error) {
        if (database_.inTransaction()) {
            database_.run("ROLLBACK");
        }
        if (error.primaryCode() != SQLITE_CONSTRAINT) {
            throw;
        }
        registerFormerTextOrder(handle());
    }
}

void FileConnection::requireWritable() const {
    // SQLite silently opens for reading what it may not write.
    if (sqlite3_db_readonly(handle(), "main") == 1) {
        throw openError(place_, "the file is read-only; to read it, say Mode=Read");
    }
}

void FileConnection::useWriteAheadJournal(const Options& options) {
    // The change of journal needs the file for itself, and SQLite does not always wait for that.
    const auto deadline = std::chrono::steady_clock::now() + options.lockTimeout;
    while (true) {
        try {
            database_.run("PRAGMA journal_mode = WAL");
            database_.run(kJournalLimit);
            checkpoints_.install(handle());
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

void FileConnection::noteJournal() {
    PreparedStatement mode(handle(), "PRAGMA journal_mode");
    if (mode.step() && mode.text(0) == "wal") {
        journalFile_ = std::string(sqlite3_db_filename(handle(), "main")) + "-wal";
    }
}

unsigned FileConnection::contentVersion() const noexcept {
    unsigned version = 0;
    sqlite3_file_control(handle(), "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

void FileConnection::requireFile() const {
    int moved = 0;
    if (sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK &&
        moved != 0) {
        throw tsql::ServerError(tsql::Message::DatabaseFileReplaced, {place_.name});
    }
}

FileConnection::Traces FileConnection::traces() const {
    const std::string name = sqlite3_db_filename(handle(), "main");
    const fs::path file = pathOf(name);
    std::error_code ignored;
    Traces found;
    found.size = fs::file_size(file, ignored);
    found.written = fs::last_write_time(file, ignored);
    const auto journal = fs::file_size(pathOf(name + "-wal"), ignored);
    found.journal = !ignored && journal > 0;
    return found;
}

bool FileConnection::isSound() const {
    return !unwritten_ || *unwritten_ == traces();
}

}  // namespace kap::engine
