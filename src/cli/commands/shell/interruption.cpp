#include "cli/commands/shell/interruption.hpp"

#ifndef _WIN32
#include <pthread.h>
#endif

namespace kap::cli {

#ifdef _WIN32

Interruption::Interruption(const ado::Connection& /*connection*/) {}
Interruption::~Interruption() = default;

#else

// A thread takes the signal: the one that works on the database may be anywhere.
Interruption::Interruption(const ado::Connection& connection) {
    sigset_t interrupts;
    sigemptyset(&interrupts);
    sigaddset(&interrupts, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupts, &before_);
    watcher_ = std::thread([this, interrupts, &connection] {
        int signal = 0;
        while (sigwait(&interrupts, &signal) == 0 && !over_) {
            happened_ = true;
            connection.Cancel();
        }
    });
}

Interruption::~Interruption() {
    over_ = true;
    pthread_kill(watcher_.native_handle(), SIGINT);
    watcher_.join();
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

#endif

}  // namespace kap::cli
