#include "ado/background.hpp"

#include <chrono>
#include <utility>

#include "data/failures.hpp"

namespace kap::ado {
namespace {

// A call to end the work is lost on work that has not begun: it is made again until it is over.
constexpr std::chrono::milliseconds kBetweenCancels{5};

}  // namespace

Background::Background(BackgroundTask task) : task_(std::move(task)) {
    thread_.start([this] { run(); });
}

Background::~Background() {
    cancel();
    wait();
}

void Background::run() noexcept {
    try {
        task_.work();
    } catch (...) {
        failure_ = std::current_exception();
    }
    const std::lock_guard lock(guard_);
    over_ = true;
    ended_.notify_all();
}

// In a process that was forked off meanwhile there is nobody who works.
bool Background::isGone() const noexcept {
    return thread_.started() && !thread_.isHere();
}

bool Background::isOver() {
    bool cancels = false;
    {
        const std::lock_guard lock(guard_);
        if (over_) {
            return true;
        }
        cancels = cancelled_;
    }
    if (cancels) {
        task_.cancel();
    }
    return isGone();
}

void Background::wait() {
    while (!isOver()) {
        std::unique_lock lock(guard_);
        if (cancelled_) {
            ended_.wait_for(lock, kBetweenCancels, [this] { return over_; });
        } else {
            ended_.wait(lock, [this] { return over_ || cancelled_; });
        }
    }
}

void Background::cancel() {
    {
        const std::lock_guard lock(guard_);
        cancelled_ = true;
        if (over_) {
            return;
        }
        ended_.notify_all();
    }
    task_.cancel();
}

void Background::finish() {
    task_.finish([this] {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        if (isGone()) {
            fail::operationCancelled();
        }
    });
}

}  // namespace kap::ado
