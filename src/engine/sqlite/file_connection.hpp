#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "engine/sqlite/checkpoints.hpp"
#include "engine/sqlite/lock_wait.hpp"
#include "engine/sqlite/options.hpp"
#include "engine/sqlite/server_errors.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "engine/values/error_slot.hpp"

namespace kap::engine {

// A database file opened and made ready: write-ahead journal, waiting for locks, the collation and
// the functions of the dialect.
class FileConnection {
public:
    // Raises DriverError saying which file and why when it cannot be opened. A file that was there
    // before is left as it was.
    explicit FileConnection(const Options& options);

    [[nodiscard]] Database& database() noexcept { return database_; }
    [[nodiscard]] sqlite3* handle() const noexcept { return database_.handle(); }
    [[nodiscard]] ErrorSlot& errorSlot() noexcept { return errorSlot_; }
    [[nodiscard]] LockWait& lockWait() noexcept { return lockWait_; }
    [[nodiscard]] const DatabasePlace& place() const noexcept { return place_; }

    // The write-ahead journal, in UTF-8; empty: there is none, and readers and writers wait for one
    // another.
    [[nodiscard]] const std::string& journalFile() const noexcept { return journalFile_; }

    // How long a locked file is waited for, in milliseconds; negative: as the connection was
    // opened.
    void setLockTimeout(std::int64_t milliseconds) {
        lockWait_.setLimit(std::chrono::milliseconds(milliseconds));
    }

    // Ends what is running, from any thread; what begins afterwards runs.
    void cancel() noexcept { cancelled_ = true; }
    void forgetCancel() noexcept { cancelled_ = false; }
    [[nodiscard]] const std::atomic<bool>& cancelled() const noexcept { return cancelled_; }

    // Another number once the file has been written, by whomever; what others have written shows
    // when a transaction has begun.
    [[nodiscard]] unsigned contentVersion() const noexcept;

    // Raises ServerError 945 when the file has been removed or replaced since it was opened: what
    // is written would be nowhere.
    void requireFile() const;
    // Whether all that was read since the connection was opened may be believed. It may not where
    // the file could only be opened as one that nobody writes, and somebody does.
    [[nodiscard]] bool isSound() const;

private:
    void prepare(const Options& options);
    void requireWritable() const;
    void useWriteAheadJournal(const Options& options);
    void noteJournal();
    void useTextOrder(bool writesFile);

    // What shows that somebody writes a file.
    struct Traces {
        std::uintmax_t size = 0;
        std::filesystem::file_time_type written;
        bool journal = false;  // which holds something
        bool operator==(const Traces&) const = default;
    };
    [[nodiscard]] Traces traces() const;

    DatabasePlace place_;
    std::string journalFile_;
    std::optional<Traces> unwritten_;  // of a file that was opened as one that nobody writes
    std::atomic<bool> cancelled_{false};
    // The connection uses these until it is closed, so they are made before it.
    ErrorSlot errorSlot_;
    LockWait lockWait_;
    Checkpoints checkpoints_;
    Database database_;
};

}  // namespace kap::engine
