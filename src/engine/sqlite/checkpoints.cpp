#include "engine/sqlite/checkpoints.hpp"

#include <bit>
#include <chrono>

namespace kap::engine {
namespace {

// Pages of the journal between two attempts.
constexpr int kStep = 1000;
// From so many steps on the journal is emptied with the writers locked out; where a reader does not
// let that be, not before it is twice as long.
constexpr unsigned kManySteps = 4;
// How long they may be locked out for a reader.
constexpr std::chrono::milliseconds kPatience{10};

// How many pages the connection has written since this was asked before.
int pagesWritten(sqlite3* database) {
    int pages = 0;
    int highest = 0;
    sqlite3_db_status(database, SQLITE_DBSTATUS_CACHE_WRITE, &pages, &highest, /*resetFlg=*/1);
    return pages;
}

void checkpoint(sqlite3* database, int mode) {
    // Where it cannot be done the next attempt does it.
    static_cast<void>(sqlite3_wal_checkpoint_v2(database, "main", mode, nullptr, nullptr));
}

}  // namespace

void Checkpoints::install(sqlite3* database) {
    database_ = database;
    sqlite3_wal_hook(database, &Checkpoints::committed, this);
}

// Nothing is locked any more, and the commit has succeeded whatever is answered.
int Checkpoints::committed(void* self, sqlite3* /*database*/, const char* /*schema*/, int pages) {
    static_cast<Checkpoints*>(self)->after(pages);
    return SQLITE_OK;
}

// The length is that of the journal with this commit in it. One commit goes over each step,
// whichever program's.
void Checkpoints::after(int pages) noexcept {
    const int steps = pages / kStep;
    if (steps == (pages - pagesWritten(database_)) / kStep) {
        return;
    }
    const auto many = static_cast<unsigned>(steps);
    if (many < kManySteps || !std::has_single_bit(many)) {
        checkpoint(database_, SQLITE_CHECKPOINT_PASSIVE);
        return;
    }
    const LockWait::Precedence first(wait_);
    const LockWait::Patience patience(wait_, kPatience);
    checkpoint(database_, SQLITE_CHECKPOINT_RESTART);
}

}  // namespace kap::engine
