#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include <sys/types.h>

namespace kap::ado::odbc {

// Ends calls of a driver that do not come back. Drivers leave it to the server to keep a
// statement's limit, and a server that has stopped answering keeps none: only somebody else can end
// the call then. Its thread is one of the few that are the library's own; it begins with
// the first limit and never runs the client's code.
class Watchdog {
public:
    // `end` is called, on another thread, when a limit is over, and again from time to time until
    // the call has come back.
    explicit Watchdog(std::function<void()> end) : end_(std::move(end)) {}
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    // What is done while the object lives has so much time; 0: no limit. Within another limit it
    // means nothing.
    class Limit {
    public:
        Limit(Watchdog& watchdog, std::chrono::milliseconds time);
        ~Limit();
        Limit(const Limit&) = delete;
        Limit& operator=(const Limit&) = delete;

    private:
        Watchdog& watchdog_;
    };

    // The server has answered: the time begins anew.
    void progress();
    // Whether any limit was over.
    [[nodiscard]] bool hasFired() const noexcept { return fired_; }

private:
    using Clock = std::chrono::steady_clock;

    void begin(std::chrono::milliseconds time);
    void finish();
    void watch();

    std::function<void()> end_;
    int depth_ = 0;
    std::chrono::milliseconds time_{0};
    std::atomic<bool> fired_{false};

    std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<Clock::time_point> deadline_;  // unset: nothing is limited
    std::optional<Clock::time_point> sleeping_;  // until when the thread sleeps; unset: until woken
    bool over_ = false;
    std::thread thread_;
    pid_t process_ = 0;  // the one that has the thread
};

}  // namespace kap::ado::odbc
