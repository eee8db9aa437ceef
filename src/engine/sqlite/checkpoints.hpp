#pragma once

#include <sqlite3.h>

#include "engine/sqlite/lock_wait.hpp"

namespace kap::engine {

// Brings what the write-ahead journal holds into the file, so that the journal stays small: behind
// the commit with which it has grown by another thousand pages.
//
// Left to itself, SQLite tries behind every commit once the journal is that long, and begins the
// journal anew only where a writer finds that all of it is in the file and nobody reads it. With
// programs that write without a pause that never is: the journal grows without an end, and each
// commit waits for the disk once or twice more. So from some length on the journal is emptied while
// the others wait to write, unless a reader needs it for long.
class Checkpoints {
public:
    explicit Checkpoints(LockWait& wait) : wait_(wait) {}
    Checkpoints(const Checkpoints&) = delete;
    Checkpoints& operator=(const Checkpoints&) = delete;

    // The connection must be closed before this object goes.
    void install(sqlite3* database);

private:
    static int committed(void* self, sqlite3* database, const char* schema, int pages);
    void after(int pages) noexcept;

    LockWait& wait_;
    sqlite3* database_ = nullptr;
};

}  // namespace kap::engine
