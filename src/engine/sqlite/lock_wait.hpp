#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>

#include <sqlite3.h>

#include "platform/turn_queue.hpp"

namespace kap::engine {

// Waits for a locked file, up to a limit, and no longer than the request that wants it may take.
// Waiting writers are served in the order in which they came: only the first polls the lock.
//
// Left to themselves, processes that write all the time take the lock again before anybody who
// sleeps sees it free, and one of them may wait for seconds.
class LockWait {
public:
    // Without a file, which nobody else can have locked, there is no line.
    LockWait(const std::optional<std::filesystem::path>& file, std::chrono::seconds limit)
        : first_(limit), limit_(limit) {
        if (file) queue_.emplace(*file);
    }
    LockWait(const LockWait&) = delete;
    LockWait& operator=(const LockWait&) = delete;

    // From now on the connection waits this way. It must be closed before this object goes.
    void install(sqlite3* database);

    // Waits no longer than this from now on; a negative time is the first limit again.
    void setLimit(std::chrono::milliseconds limit) { limit_ = limit.count() < 0 ? first_ : limit; }

    // While it lives no lock is waited for longer than this.
    class Patience {
    public:
        Patience(LockWait& wait, std::chrono::milliseconds most)
            : wait_(wait), limit_(wait.limit_) {
            wait_.limit_ = std::min(most, limit_);
        }
        Patience(const Patience&) = delete;
        Patience& operator=(const Patience&) = delete;
        ~Patience() { wait_.limit_ = limit_; }

    private:
        LockWait& wait_;
        std::chrono::milliseconds limit_;
    };

    // While the write lock is being taken. A writer that finds the file locked joins the queue, and
    // so does one that has overtaken waiting writers too often; this object's end takes it out.
    class Turn {
    public:
        explicit Turn(LockWait& wait);
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn();

    private:
        LockWait& wait_;
    };

    // While work is done again that somebody else's write has spoiled: it reads, and then writes
    // what it has read. The connection waits for its place in the queue before it reads, and nobody
    // goes past it until this object's end. Nothing is locked. Must not be made while the
    // connection has the write lock, which those in front may wait for. One within another is part
    // of it.
    //
    // Without it whoever waits in the queue finds that what he read before has changed, each time.
    class Precedence {
    public:
        explicit Precedence(LockWait& wait);
        Precedence(const Precedence&) = delete;
        Precedence& operator=(const Precedence&) = delete;
        ~Precedence();

    private:
        LockWait& wait_;
        bool within_;
    };

private:
    static int called(void* self, int attempt);
    [[nodiscard]] bool wait(int attempt);
    [[nodiscard]] bool standInLine();

    sqlite3* database_ = nullptr;
    std::chrono::milliseconds first_;
    std::chrono::milliseconds limit_;
    std::chrono::steady_clock::time_point start_;       // of the wait
    std::chrono::steady_clock::time_point firstSince_;  // nobody else stands in front
    std::optional<platform::TurnQueue> queue_;
    bool inLine_ = false;
    bool precedes_ = false;  // a Precedence keeps the place in the queue
    int rushes_ = 0;         // times in a row the lock was taken, or tried, past those who wait
};

}  // namespace kap::engine
