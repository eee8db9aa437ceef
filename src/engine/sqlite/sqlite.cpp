#include "engine/sqlite/sqlite.hpp"

#include <cerrno>
#include <new>

#include "engine/sqlite/flat_text.hpp"
#include "engine/sqlite/sqlite_stack.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {

const char* sqliteVersion() noexcept {
    return sqlite3_libversion();
}

namespace {

constexpr std::string_view kParserOverflow = "parser stack overflow";

// On these hosts SQLite takes some errors of the system for damage of the file.
bool hasOwnFiles(sqlite3* database) {
    sqlite3_vfs* files = nullptr;
    return sqlite3_file_control(database, "main", SQLITE_FCNTL_VFS_POINTER, &files) == SQLITE_OK &&
           files != nullptr && std::string_view(files->zName).starts_with("unix");
}

// The number stays in the file until a read ends behind the file's end.
int takeReadFailureOf(sqlite3* database, int whichFile) {
    sqlite3_file* file = nullptr;
    int number = 0;
    if (sqlite3_file_control(database, "main", whichFile, static_cast<void*>(&file)) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr ||
        file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &number) != SQLITE_OK ||
        number == 0) {
        return 0;
    }
    sqlite3_int64 size = 0;
    char byte = 0;
    if (file->pMethods->xFileSize(file, &size) == SQLITE_OK) {
        (void)file->pMethods->xRead(file, &byte, 1, size);
    }
    return number;
}

}  // namespace

int takeReadFailure(sqlite3* database) noexcept {
    if (!hasOwnFiles(database)) {
        return 0;
    }
    const int ofFile = takeReadFailureOf(database, SQLITE_FCNTL_FILE_POINTER);
    const int ofJournal = takeReadFailureOf(database, SQLITE_FCNTL_JOURNAL_POINTER);
    return ofFile != 0 ? ofFile : ofJournal;
}

SqliteError lastError(sqlite3* database) {
    SqliteError error(sqlite3_extended_errcode(database), sqlite3_errmsg(database),
                      sqlite3_system_errno(database));
    const int primary = error.primaryCode();
    if (primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB || primary == SQLITE_IOERR) {
        const int number = takeReadFailure(database);
        const bool isTakenForDamage = number == EIO || number == ENXIO || number == ERANGE;
        if (isTakenForDamage && primary != SQLITE_IOERR) {
            return {SQLITE_IOERR_READ, sqlite3_errstr(SQLITE_IOERR), number};
        }
    }
    return error;
}

PreparedStatement::PreparedStatement(sqlite3* database, std::string_view sql, StatementLife life) {
    limitNesting(database);
    if (prepare(database, sql, life) == SQLITE_OK) return;
    const SqliteError error = lastError(database);
    if (std::string_view(error.what()) != kParserOverflow) throw error;
    const std::string flat = flattened(sql);
    if (flat.empty() || prepare(database, flat, life) != SQLITE_OK) throw error;
}

int PreparedStatement::prepare(sqlite3* database, std::string_view sql, StatementLife life) {
    const unsigned flags = life == StatementLife::Kept ? SQLITE_PREPARE_PERSISTENT : 0U;
    sqlite3_stmt* made = nullptr;
    const int code = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()), flags,
                                        &made, nullptr);
    statement_.reset(made);
    return code;
}

void PreparedStatement::check(int code) const {
    if (code != SQLITE_OK) {
        throw lastError(database());
    }
}

void PreparedStatement::bind(int index, const ado::Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        bind(index, *integer);
    } else if (const auto* real = std::get_if<double>(&value)) {
        check(sqlite3_bind_double(handle(), index, *real));
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        check(sqlite3_bind_text64(handle(), index, text->c_str(), text->size(), SQLITE_TRANSIENT,
                                  SQLITE_UTF8));
    } else if (const auto* blob = std::get_if<ado::Blob>(&value)) {
        check(sqlite3_bind_blob64(handle(), index, blob->bytes.c_str(), blob->bytes.size(),
                                  SQLITE_TRANSIENT));
    } else {
        check(sqlite3_bind_null(handle(), index));
    }
}

void PreparedStatement::bind(int index, std::int64_t value) {
    check(sqlite3_bind_int64(handle(), index, value));
}

void PreparedStatement::bind(int index, std::string_view text) {
    // A null pointer would bind Null, and an empty view may have one.
    const char* data = text.empty() ? "" : text.data();
    check(sqlite3_bind_text64(handle(), index, data, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

bool PreparedStatement::step() {
    const int code = sqlite3_step(handle());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code != SQLITE_DONE) {
        throw lastError(database());
    }
    return false;
}

void PreparedStatement::reset() noexcept {
    // The code repeats the failure of the last step, which step() has already reported.
    (void)sqlite3_reset(handle());
}

void PreparedStatement::run() {
    const ResetGuard guard(*this);
    try {
        while (step()) {
        }
    } catch (const SqliteError& error) {
        if (!isDoneNevertheless(error)) {
            throw;
        }
        TimeLimit::forgive(database());
    }
}

// SQLite looks at the limit once more behind a statement's last step. Of a writing statement that
// it ends before, it undoes the whole transaction; where that is still open, the statement is done.
bool PreparedStatement::isDoneNevertheless(const SqliteError& error) const {
    return error.primaryCode() == SQLITE_INTERRUPT && sqlite3_stmt_readonly(handle()) == 0 &&
           sqlite3_get_autocommit(database()) == 0;
}

std::string PreparedStatement::text(int column) const {
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(handle(), column));
    if (data == nullptr) {
        // The same for a Null and for want of memory.
        if (sqlite3_errcode(database()) == SQLITE_NOMEM) {
            throw std::bad_alloc();
        }
        return {};
    }
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(handle(), column))};
}

ado::Value PreparedStatement::value(int column) const {
    switch (sqlite3_column_type(handle(), column)) {
        case SQLITE_INTEGER:
            return integer(column);
        case SQLITE_FLOAT:
            return sqlite3_column_double(handle(), column);
        case SQLITE_TEXT:
            return text(column);
        case SQLITE_BLOB: {
            const auto* data = static_cast<const char*>(sqlite3_column_blob(handle(), column));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle(), column));
            return ado::Blob{size == 0 ? std::string() : std::string(data, size)};
        }
        default:
            return std::monostate{};
    }
}

Database::Database(const std::string& name, int flags) {
    sqlite3* made = nullptr;
    const int code = sqlite3_open_v2(name.c_str(), &made,
                                     flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    database_.reset(made);
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    if (code != SQLITE_OK) {
        throw lastError(made);
    }
}

void Database::run(const char* sql) {
    if (sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw lastError(handle());
    }
}

bool Database::hasTable(const char* schema, const std::string& name) const {
    const int result = sqlite3_table_column_metadata(handle(), schema, name.c_str(), nullptr,
                                                     nullptr, nullptr, nullptr, nullptr, nullptr);
    // What is no table is a plain error; any other is one of reading the schema.
    if (result != SQLITE_OK && result != SQLITE_ERROR) throw lastError(handle());
    return result == SQLITE_OK;
}

bool Database::hasRowNumbers(const std::string& table, bool temporary) const {
    return sqlite3_table_column_metadata(handle(), temporary ? "temp" : "main", table.c_str(),
                                         "rowid", nullptr, nullptr, nullptr, nullptr,
                                         nullptr) == SQLITE_OK;
}

}  // namespace kap::engine
