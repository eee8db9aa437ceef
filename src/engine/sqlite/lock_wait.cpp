#include "engine/sqlite/lock_wait.hpp"

#include <algorithm>
#include <thread>

#include "engine/sqlite/sqlite.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {
namespace {

using std::chrono::steady_clock;

// Most transactions take less time than falling asleep and waking up, so that the first in line,
// the only one to do so, looks again at once. When it takes longer, a transaction is open at
// somebody's leisure.
constexpr std::chrono::milliseconds kAwake{1};
constexpr std::chrono::microseconds kShortestSleep{100};
constexpr std::chrono::milliseconds kLongestSleep{5};
constexpr int kPartOfWait = 20;

// How often somebody may take the lock past those who wait, before he stands in line behind them.
// With none at all, whoever has waited would find that what he read before has changed, each time.
constexpr int kMostRushes = 2;

}  // namespace

void LockWait::install(sqlite3* database) {
    if (sqlite3_busy_handler(database, &LockWait::called, this) != SQLITE_OK) {
        throw lastError(database);
    }
    database_ = database;
}

int LockWait::called(void* self, int attempt) {
    return static_cast<LockWait*>(self)->wait(attempt) ? 1 : 0;
}

bool LockWait::wait(int attempt) {
    if (attempt == 0 && inLine_) {
        return standInLine();
    }
    const auto now = steady_clock::now();
    if (attempt == 0) {
        start_ = now;
        firstSince_ = now;
    }
    if (now - start_ >= limit_ || TimeLimit::isOver(database_)) {
        return false;
    }
    const auto waited = now - firstSince_;
    if (inLine_ && waited < kAwake) {
        std::this_thread::yield();
    } else {
        std::this_thread::sleep_for(std::clamp<steady_clock::duration>(
            waited / kPartOfWait, kShortestSleep, kLongestSleep));
    }
    return true;
}

// Returns as the first in line; false when the time passes before.
bool LockWait::standInLine() {
    rushes_ = 0;
    const auto passed = steady_clock::now() - start_;
    const auto left = TimeLimit::left(
        database_, std::chrono::duration_cast<std::chrono::milliseconds>(limit_ - passed));
    const bool first = !queue_ || queue_->enter(left);
    firstSince_ = steady_clock::now();
    return first && left.count() > 0;
}

LockWait::Turn::Turn(LockWait& wait) : wait_(wait) {
    wait_.inLine_ = true;
    wait_.start_ = steady_clock::now();
    if (!wait_.queue_ || wait_.precedes_ || !wait_.queue_->isBusy()) {
        wait_.rushes_ = 0;
    } else if (++wait_.rushes_ > kMostRushes || wait_.queue_->isReserved()) {
        // When the time passes in the line, the attempt that follows is the last.
        static_cast<void>(wait_.standInLine());
    }
}

LockWait::Turn::~Turn() {
    wait_.inLine_ = false;
    if (wait_.queue_ && !wait_.precedes_) wait_.queue_->leave();
}

LockWait::Precedence::Precedence(LockWait& wait) : wait_(wait), within_(wait.precedes_) {
    if (within_) return;
    wait_.start_ = steady_clock::now();
    wait_.precedes_ = wait_.queue_ && wait_.standInLine();
    if (wait_.precedes_) wait_.queue_->reserve();
}

LockWait::Precedence::~Precedence() {
    if (within_) return;
    wait_.precedes_ = false;
    if (wait_.queue_) wait_.queue_->leave();
}

}  // namespace kap::engine
