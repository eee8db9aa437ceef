#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "data/driver.hpp"

// SQLite's handles with owners, and its return codes as one exception.
namespace kap::engine {

// What SQLite answered when a call failed. Raised by the owners below; nobody above the embedded
// driver sees it: it leaves as a DriverError (see failures.hpp).
class SqliteError : public std::runtime_error {
public:
    SqliteError(int code, const std::string& message, int systemError)
        : std::runtime_error(message), code_(code), systemError_(systemError) {}

    // The extended result code.
    [[nodiscard]] int code() const noexcept { return code_; }
    [[nodiscard]] int primaryCode() const noexcept { return code_ & 0xFF; }
    // The operating system's error number behind it, 0 when there is none.
    [[nodiscard]] int systemError() const noexcept { return systemError_; }

private:
    int code_;
    int systemError_;
};

// The library's version, as it was loaded.
[[nodiscard]] const char* sqliteVersion() noexcept;

// The last failure of a connection. A failed read that SQLite tells as damage is SQLITE_IOERR_READ
// here.
[[nodiscard]] SqliteError lastError(sqlite3* database);

// Whether a file of the connection could not be read since this was asked before: the system's
// error number, or 0.
int takeReadFailure(sqlite3* database) noexcept;

// How a statement is going to be used.
enum class StatementLife : std::uint8_t { Once, Kept };

// One prepared statement. Every member raises SqliteError when SQLite refuses.
class PreparedStatement {
public:
    PreparedStatement() = default;
    // Prepares the first statement of `sql`.
    PreparedStatement(sqlite3* database, std::string_view sql,
                      StatementLife life = StatementLife::Once);

    // Values are counted from 1. A value is copied; a text given by itself must live until the
    // statement is reset.
    void bind(int index, const ado::Value& value);
    void bind(int index, std::int64_t value);
    void bind(int index, std::string_view text);

    // True when a row stands ready, false at the end.
    bool step();
    // Ready to run again; the values stay bound.
    void reset() noexcept;
    // Runs to the end, ignoring rows, and resets, also when it fails.
    void run();

    [[nodiscard]] int columnCount() const noexcept { return sqlite3_column_count(handle()); }
    [[nodiscard]] bool isNull(int column) const noexcept {
        return sqlite3_column_type(handle(), column) == SQLITE_NULL;
    }
    [[nodiscard]] std::int64_t integer(int column) const noexcept {
        return sqlite3_column_int64(handle(), column);
    }
    [[nodiscard]] std::string text(int column) const;
    // The value as it lies in the row, without conversion.
    [[nodiscard]] ado::Value value(int column) const;

    // Whether somebody is in the middle of its rows.
    [[nodiscard]] bool isRunning() const noexcept { return sqlite3_stmt_busy(handle()) != 0; }
    // Whether SQLite has had to prepare the text anew since the last call, because the schema or
    // the connection's functions changed.
    [[nodiscard]] bool preparedAnew() noexcept {
        return sqlite3_stmt_status(handle(), SQLITE_STMTSTATUS_REPREPARE, 1) != 0;
    }

    [[nodiscard]] sqlite3_stmt* handle() const noexcept { return statement_.get(); }

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    [[nodiscard]] sqlite3* database() const noexcept { return sqlite3_db_handle(handle()); }
    [[nodiscard]] int prepare(sqlite3* database, std::string_view sql, StatementLife life);
    [[nodiscard]] bool isDoneNevertheless(const SqliteError& error) const;
    void check(int code) const;

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// Resets a statement at the end of a scope, so that it never keeps a lock on the file.
class ResetGuard {
public:
    explicit ResetGuard(PreparedStatement& statement) noexcept : statement_(&statement) {}
    ResetGuard(const ResetGuard&) = delete;
    ResetGuard& operator=(const ResetGuard&) = delete;
    ~ResetGuard() {
        if (statement_ != nullptr) {
            statement_->reset();
        }
    }
    // Somebody else takes over the statement, in the middle of its rows.
    void release() noexcept { statement_ = nullptr; }

private:
    PreparedStatement* statement_;
};

// One connection to a database file.
class Database {
public:
    // `flags` are SQLite's; a serialising mutex is never asked for, because a connection belongs to
    // one thread at a time.
    Database(const std::string& name, int flags);

    // Runs one or more statements that return nothing of interest.
    void run(const char* sql);
    // Whether a table exists in the schema "main" or "temp", found without running a statement.
    [[nodiscard]] bool hasTable(const char* schema, const std::string& name) const;
    // Whether the rows of a table are numbered: not in one made WITHOUT ROWID.
    [[nodiscard]] bool hasRowNumbers(const std::string& table, bool temporary) const;
    [[nodiscard]] bool inTransaction() const noexcept {
        return sqlite3_get_autocommit(handle()) == 0;
    }
    [[nodiscard]] std::int64_t changes() const noexcept { return sqlite3_changes64(handle()); }

    [[nodiscard]] sqlite3* handle() const noexcept { return database_.get(); }

private:
    struct Closer {
        void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
    };
    std::unique_ptr<sqlite3, Closer> database_;
};

}  // namespace kap::engine
