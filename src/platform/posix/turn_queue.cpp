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

namespace kap::platform {
namespace {

// The semaphores of all files of a user are one set, which stays until the machine is restarted: a
// set for each file would have to be removed by the last to use it, who may be killed before.
constexpr std::size_t kQueues = 250;
constexpr key_t kFirstKey = 0x4B617000;

// Made by the kernel with zeros: nobody is inside. Negative when the system has none.
int semaphores() {
    static const int set = semget(kFirstKey ^ static_cast<key_t>(getuid()),
                                  static_cast<int>(kQueues), IPC_CREAT | S_IRUSR | S_IWUSR);
    return set;
}

unsigned short queueOf(const std::filesystem::path& file) {
    struct stat found {};
    const std::size_t number = stat(file.c_str(), &found) == 0
                                   ? std::hash<dev_t>()(found.st_dev) * 31 + found.st_ino
                                   : std::filesystem::hash_value(file);
    return static_cast<unsigned short>(number % kQueues);
}

timespec timeOf(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    return {static_cast<std::time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
}

}  // namespace

TurnQueue::TurnQueue(const std::filesystem::path& file) : file_(file) {}

// One who is inside counts as 1, which the kernel takes back from a process that dies. It serves
// those who wait in the order in which they came.
bool TurnQueue::enter(std::chrono::milliseconds limit) {
    if (inside_ || semaphores() < 0) return true;
    if (place_ == 0) place_ = queueOf(file_) + 1;
    const auto queue = static_cast<unsigned short>(place_ - 1);
    std::array<sembuf, 2> steps{{{queue, 0, 0}, {queue, 1, SEM_UNDO}}};
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        const auto left = std::max(deadline - std::chrono::steady_clock::now(),
                                   std::chrono::steady_clock::duration::zero());
        const timespec time = timeOf(left);
        inside_ = semtimedop(semaphores(), steps.data(), steps.size(), &time) == 0;
        if (inside_) return true;
        if (errno == EAGAIN) return false;
        if (errno != EINTR) return true;
    }
}

void TurnQueue::leave() noexcept {
    if (!inside_) return;
    inside_ = false;
    sembuf step{static_cast<unsigned short>(place_ - 1), -1, SEM_UNDO | IPC_NOWAIT};
    semop(semaphores(), &step, 1);
}

}  // namespace kap::platform
