#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

struct sqlite3;

namespace kap::engine {

// Ends what a connection runs when its time has passed: SQLite is interrupted, and scripts ask
// between their statements, and while they wait. Limits do not nest: the outermost one counts.
class TimeLimit {
public:
    // `limit` 0 is none. When `cancelled` becomes true, on whatever thread, it has passed at once.
    TimeLimit(sqlite3* connection, std::chrono::seconds limit,
              const std::atomic<bool>* cancelled = nullptr);
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    ~TimeLimit();

    [[nodiscard]] bool passed() const noexcept { return passed_; }

    // Raises SqliteError (interrupted) when the limit of the connection has passed.
    static void check(sqlite3* connection);
    // Whether it has, without raising anything.
    [[nodiscard]] static bool isOver(sqlite3* connection) noexcept;
    // A statement was interrupted when it had done its work: nothing is to be told of that. What
    // comes next finds that the limit has passed.
    static void forgive(sqlite3* connection) noexcept;
    // The time that is left, no more than `most`.
    [[nodiscard]] static std::chrono::milliseconds left(sqlite3* connection,
                                                        std::chrono::milliseconds most) noexcept;
    // Waits, for as long as the limit allows.
    static void wait(sqlite3* connection, std::chrono::milliseconds time);

    // While one lives, the limits of its thread interrupt nothing: around what must be done to its
    // end or not be begun. SQLite also asks when a statement has done its work, and answers
    // "interrupted" to a BEGIN or a COMMIT that has taken place.
    class Pause {
    public:
        Pause() noexcept { ++pauses; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause() { --pauses; }
    };

    // Makes the limits of its thread pass at a look that is known beforehand, whatever the clock
    // says, so that tests can let them pass at each place where they may.
    class Fuse {
    public:
        // The limit is looked at each `steps` steps of SQLite's machine, and has passed at the look
        // behind the first `looks` ones.
        Fuse(int steps, std::int64_t looks) noexcept;
        Fuse(const Fuse&) = delete;
        Fuse& operator=(const Fuse&) = delete;
        ~Fuse();
        [[nodiscard]] bool blown() const noexcept { return looks_ < 0; }

    private:
        friend class TimeLimit;
        int steps_;
        std::int64_t looks_;
        Fuse* outer_;
    };

private:
    static int called(void* self);
    [[nodiscard]] bool look() noexcept;

    sqlite3* connection_;
    std::chrono::steady_clock::time_point end_;
    bool timed_;
    const std::atomic<bool>* cancelled_;
    bool limited_;
    bool passed_ = false;
    TimeLimit* outer_;
    static thread_local TimeLimit* current;
    static thread_local Fuse* fuse;
    static thread_local int pauses;
};

}  // namespace kap::engine
