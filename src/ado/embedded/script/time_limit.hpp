#pragma once

#include <chrono>

struct sqlite3;

namespace kap::ado::embedded {

// Ends what a connection runs when its time has passed: SQLite is interrupted, and scripts that
// wait or loop ask. Limits do not nest: the outermost one counts.
class TimeLimit {
public:
    // `limit` 0 is none.
    TimeLimit(sqlite3* connection, std::chrono::seconds limit);
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    ~TimeLimit();

    [[nodiscard]] bool passed() const noexcept { return passed_; }

    // Raises SqliteError (interrupted) when the limit of the connection has passed.
    static void check(sqlite3* connection);
    // Waits, for as long as the limit allows.
    static void wait(sqlite3* connection, std::chrono::milliseconds time);

private:
    static int called(void* self);
    [[nodiscard]] bool look() noexcept;

    sqlite3* connection_;
    std::chrono::steady_clock::time_point end_;
    bool limited_;
    bool passed_ = false;
    TimeLimit* outer_;
    static thread_local TimeLimit* current;
};

}  // namespace kap::ado::embedded
