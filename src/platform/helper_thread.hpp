#pragma once

#include <cstdint>
#include <functional>
#include <thread>

namespace kap::platform {

// A thread of the library's own. It runs nothing of a client's, and the client's signals are not
// handled on it.
class HelperThread {
public:
    HelperThread() = default;
    // Waits for the end of `work`, which whoever owns the thread has to bring about.
    ~HelperThread();
    HelperThread(const HelperThread&) = delete;
    HelperThread& operator=(const HelperThread&) = delete;

    // Raises std::system_error when the system has no thread left.
    void start(std::function<void()> work);
    [[nodiscard]] bool started() const noexcept { return thread_.joinable(); }
    // Whether it runs in this process: threads do not follow into one that was forked off.
    [[nodiscard]] bool isHere() const noexcept;

private:
    std::thread thread_;
    std::int64_t process_ = 0;  // the one that has the thread
};

}  // namespace kap::platform
