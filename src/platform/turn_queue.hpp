#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>

namespace kap::platform {

// The order in which threads and processes that want the same file get at it: who came first is
// first.
//
// It guards nothing. Who has the turn is the only one that goes on trying, instead of all at once,
// and on a machine that offers no such service everybody has it. Each file has a queue of its own.
class TurnQueue {
public:
    explicit TurnQueue(const std::filesystem::path& file);
    TurnQueue(const TurnQueue&) = delete;
    TurnQueue& operator=(const TurnQueue&) = delete;
    ~TurnQueue();

    // Whether anybody has the turn or waits for it.
    [[nodiscard]] bool isBusy() const;

    // Waits until it is this one's turn; false when that takes longer than the limit.
    [[nodiscard]] bool enter(std::chrono::milliseconds limit);
    // Ends the turn, in the thread that has entered; does nothing without one. A process that dies
    // ends its turn, too.
    void leave() noexcept;

    // Marks the turn that this one has, until it ends, as one that nobody may go past. Where the
    // machine has no such mark it does nothing.
    void reserve() noexcept;
    // Whether somebody has marked his turn.
    [[nodiscard]] bool isReserved() const;

private:
    std::filesystem::path file_;
    mutable std::intptr_t name_ = 0;  // of the host: what the queue is found by, once it was asked
    std::intptr_t place_ = 0;         // of the host: the queue, once it has been entered
    bool inside_ = false;
    bool reserved_ = false;
};

}  // namespace kap::platform
