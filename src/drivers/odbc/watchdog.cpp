#include "drivers/odbc/watchdog.hpp"

#include <unistd.h>

#include <csignal>

namespace kap::ado::odbc {
namespace {

constexpr std::chrono::milliseconds kAgain(500);

// The client's signals are handled on its own threads.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_{};
};

}  // namespace

Watchdog::~Watchdog() {
    if (!thread_.joinable()) {
        return;
    }
    if (process_ != getpid()) {  // threads do not follow into a process that was forked off
        thread_.detach();
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

Watchdog::Limit::Limit(Watchdog& watchdog, std::chrono::milliseconds time) : watchdog_(watchdog) {
    if (watchdog_.depth_++ == 0) {
        watchdog_.begin(time);
    }
}

Watchdog::Limit::~Limit() {
    if (--watchdog_.depth_ == 0) {
        watchdog_.finish();
    }
}

void Watchdog::begin(std::chrono::milliseconds time) {
    time_ = time;
    if (time_.count() == 0) {
        return;
    }
    if (!thread_.joinable()) {
        const BlockedSignals blocked;
        process_ = getpid();
        thread_ = std::thread([this] { watch(); });
    }
    progress();
}

// The thread is left asleep: when it wakes, it looks how late it has become meanwhile.
void Watchdog::progress() {
    if (time_.count() == 0) {
        return;
    }
    bool sleepsTooLong = false;
    {
        const std::lock_guard lock(mutex_);
        deadline_ = Clock::now() + time_;
        sleepsTooLong = !sleeping_ || *sleeping_ > *deadline_;
    }
    if (sleepsTooLong) {
        wake_.notify_one();
    }
}

void Watchdog::finish() {
    if (time_.count() != 0) {
        const std::lock_guard lock(mutex_);
        deadline_.reset();
    }
}

void Watchdog::watch() {
    std::unique_lock lock(mutex_);
    while (!over_) {
        sleeping_ = deadline_;
        if (!deadline_) {
            wake_.wait(lock);
        } else if (Clock::now() < *deadline_) {
            wake_.wait_until(lock, *sleeping_);
        } else {
            fired_ = true;
            end_();
            deadline_ = Clock::now() + kAgain;
        }
    }
}

}  // namespace kap::ado::odbc
