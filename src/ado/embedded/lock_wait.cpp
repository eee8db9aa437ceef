#include "ado/embedded/lock_wait.hpp"

#include <thread>

#include "ado/embedded/sqlite.hpp"

namespace kap::ado::embedded {
namespace {

constexpr int kShortestMilliseconds = 1;
constexpr int kLongestMilliseconds = 15;

}  // namespace

void LockWait::install(sqlite3* database) {
    if (sqlite3_busy_handler(database, &LockWait::called, this) != SQLITE_OK) {
        throw lastError(database);
    }
}

int LockWait::called(void* self, int attempt) {
    return static_cast<LockWait*>(self)->sleep(attempt) ? 1 : 0;
}

bool LockWait::sleep(int attempt) {
    const auto now = std::chrono::steady_clock::now();
    if (attempt == 0) {
        start_ = now;
    }
    if (now - start_ >= limit_) {
        return false;
    }
    std::uniform_int_distribution<int> milliseconds(kShortestMilliseconds, kLongestMilliseconds);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random_)));
    return true;
}

}  // namespace kap::ado::embedded
