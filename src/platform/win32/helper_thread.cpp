#include "platform/helper_thread.hpp"

#include <utility>

namespace kap::platform {

HelperThread::~HelperThread() {
    if (started()) {
        thread_.join();
    }
}

void HelperThread::start(std::function<void()> work) {
    thread_ = std::thread(std::move(work));
}

// Processes are not forked off here.
bool HelperThread::isHere() const noexcept {
    return started();
}

}  // namespace kap::platform
