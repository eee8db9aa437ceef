#include "platform/helper_thread.hpp"

#include <unistd.h>

#include <csignal>
#include <utility>

namespace kap::platform {
namespace {

// A thread begins with the signals blocked that are blocked where it is made.
class NoSignals {
public:
    NoSignals() noexcept {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

private:
    sigset_t before_{};
};

}  // namespace

HelperThread::~HelperThread() {
    if (!started()) {
        return;
    }
    if (isHere()) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void HelperThread::start(std::function<void()> work) {
    const NoSignals blocked;
    thread_ = std::thread(std::move(work));
    process_ = getpid();
}

bool HelperThread::isHere() const noexcept {
    return started() && process_ == getpid();
}

}  // namespace kap::platform
