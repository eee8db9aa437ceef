#include "ado/embedded/lock_wait.hpp"

#include <algorithm>
#include <thread>

#include "ado/embedded/sqlite.hpp"

namespace kap::ado::embedded {
namespace {

using std::chrono::microseconds;

constexpr microseconds kLongestSleep{15'000};
constexpr microseconds kShortestSleep{500};
// After so long a wait the sleeps begin to shorten.
constexpr microseconds kPatience{20'000};

microseconds longestSleep(microseconds waited) {
    if (waited <= kPatience) {
        return kLongestSleep;
    }
    return std::max(kShortestSleep, kLongestSleep * kPatience.count() / waited.count());
}

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
    const auto longest = longestSleep(std::chrono::duration_cast<microseconds>(now - start_));
    std::uniform_int_distribution<microseconds::rep> length(kShortestSleep.count(),
                                                            longest.count());
    std::this_thread::sleep_for(microseconds(length(random_)));
    return true;
}

}  // namespace kap::ado::embedded
