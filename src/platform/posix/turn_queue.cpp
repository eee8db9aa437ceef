#include "platform/turn_queue.hpp"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <functional>
#include <utility>

namespace kap::platform {
namespace {

// A semaphore of the kernel's for each file and user, found by a number made of the file's. Files
// that shared one would wait for each other.
key_t keyOf(const std::filesystem::path& file) {
    struct stat found {};
    std::size_t number =
        stat(file.c_str(), &found) == 0
            ? std::hash<std::size_t>()(found.st_dev * 0x9E3779B97F4A7C15U) ^ found.st_ino
            : std::filesystem::hash_value(file);
    number = (number ^ getuid()) * 0x9E3779B97F4A7C15U;
    const auto key = static_cast<key_t>(number >> 33U);
    return key == IPC_PRIVATE ? key + 1 : key;
}

// The file's semaphore; negative when there is none. `make` makes it then: the kernel does so with
// zero, nobody is inside. `name` keeps what it is found by: whoever waits has the file open, and it
// stays that file.
int semaphoreOf(const std::filesystem::path& file, std::intptr_t& name, bool make) {
    if (name == 0) name = keyOf(file);
    return semget(static_cast<key_t>(name), 1, S_IRUSR | S_IWUSR | (make ? IPC_CREAT : 0));
}

bool isBusySemaphore(int set) {
    return semctl(set, 0, GETVAL) > 0 || semctl(set, 0, GETZCNT) > 0;
}

// Adds to a semaphore what the kernel takes back from a process that dies.
bool change(std::intptr_t place, short by) noexcept {
    sembuf step{0, by, SEM_UNDO | IPC_NOWAIT};
    return semop(static_cast<int>(place - 1), &step, 1) == 0;
}

timespec timeOf(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    return {static_cast<std::time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
}

}  // namespace

TurnQueue::TurnQueue(const std::filesystem::path& file) : file_(file) {}

// The last one takes the semaphore away, lest one stays for every file that ever was; one that a
// killed program leaves is found again by the next. Whoever was about to use it makes another.
TurnQueue::~TurnQueue() {
    leave();
    if (place_ == 0) return;
    const auto set = static_cast<int>(place_ - 1);
    if (!isBusySemaphore(set)) semctl(set, 0, IPC_RMID);
}

bool TurnQueue::isBusy() const {
    const int set = semaphoreOf(file_, name_, /*make=*/false);
    return set >= 0 && isBusySemaphore(set);
}

bool TurnQueue::isReserved() const {
    const int set = semaphoreOf(file_, name_, /*make=*/false);
    return set >= 0 && semctl(set, 0, GETVAL) > 1;
}

// One who is inside counts as 1, and as 2 with a mark, which the kernel takes back from a process
// that dies. It serves those who wait in the order in which they came.
bool TurnQueue::enter(std::chrono::milliseconds limit) {
    if (inside_) return true;
    constexpr int kMostRemovals = 100;
    std::array<sembuf, 2> steps{{{0, 0, 0}, {0, 1, SEM_UNDO}}};
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (int removals = 0; removals < kMostRemovals;) {
        if (place_ == 0) place_ = semaphoreOf(file_, name_, /*make=*/true) + 1;
        if (place_ == 0) return true;
        const auto left = std::max(deadline - std::chrono::steady_clock::now(),
                                   std::chrono::steady_clock::duration::zero());
        const timespec time = timeOf(left);
        inside_ = semtimedop(static_cast<int>(place_ - 1), steps.data(), steps.size(), &time) == 0;
        if (inside_) return true;
        if (errno == EAGAIN) return false;
        if (errno == EIDRM || errno == EINVAL) {
            place_ = 0;  // somebody has taken it away meanwhile
            ++removals;
        } else if (errno != EINTR) {
            return true;
        }
    }
    return true;
}

void TurnQueue::leave() noexcept {
    if (!inside_) return;
    inside_ = false;
    change(place_, std::exchange(reserved_, false) ? -2 : -1);
}

void TurnQueue::reserve() noexcept {
    if (inside_ && !reserved_) reserved_ = change(place_, 1);
}

}  // namespace kap::platform
