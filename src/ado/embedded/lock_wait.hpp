#pragma once

#include <chrono>
#include <random>

#include <sqlite3.h>

namespace kap::ado::embedded {

// Waits for a locked file in short sleeps of random length, up to a limit.
//
// SQLite's own handler backs off to long sleeps, and with several busy processes one of them then
// waits for seconds while the others take turns. Short random sleeps keep the turns fair, and who
// has waited longer looks more often.
class LockWait {
public:
    explicit LockWait(std::chrono::seconds limit) : first_(limit), limit_(limit) {}
    LockWait(const LockWait&) = delete;
    LockWait& operator=(const LockWait&) = delete;

    // From now on the connection waits this way. It must be closed before this object goes.
    void install(sqlite3* database);

    // Waits no longer than this from now on; a negative time is the first limit again.
    void setLimit(std::chrono::milliseconds limit) { limit_ = limit.count() < 0 ? first_ : limit; }

private:
    static int called(void* self, int attempt);
    [[nodiscard]] bool sleep(int attempt);

    std::chrono::milliseconds first_;
    std::chrono::milliseconds limit_;
    std::chrono::steady_clock::time_point start_;
    std::minstd_rand random_{std::random_device{}()};
};

}  // namespace kap::ado::embedded
