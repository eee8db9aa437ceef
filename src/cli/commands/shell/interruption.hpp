#pragma once

#include <atomic>

#ifndef _WIN32
#include <signal.h>

#include <thread>
#endif

#include <kaputil/ado/connection.hpp>

namespace kap::cli {

// While one lives, Ctrl-C ends what the connection is running instead of the program.
class Interruption {
public:
    explicit Interruption(const ado::Connection& connection);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // Whether that has happened.
    [[nodiscard]] bool happened() const noexcept { return happened_; }

private:
    std::atomic<bool> happened_ = false;
#ifndef _WIN32
    std::atomic<bool> over_ = false;
    sigset_t before_{};
    std::thread watcher_;
#endif
};

}  // namespace kap::cli
