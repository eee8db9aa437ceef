#include "platform/turn_queue.hpp"

#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/unicode.hpp"
#include "platform/paths.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform {
namespace {

// A mutex with a name made of the file's. The system serves those who wait in the order in which
// they came, and removes it with the last process that uses it.
std::u16string nameOf(const std::filesystem::path& file) {
    std::error_code error;
    const std::u16string path =
        unicode::upper(pathText(std::filesystem::weakly_canonical(file, error)).view());
    const auto hash = static_cast<std::int64_t>(unicode::NameHash()(path) & 0x7FFFFFFF);
    return u"Local\\kaputil turn " + String(plain::text(hash)).units();
}

HANDLE queueOf(const std::filesystem::path& file) {
    const std::u16string name = nameOf(file);
    return CreateMutexW(nullptr, FALSE, wide(name));
}

DWORD milliseconds(std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds kLongest{INFINITE - 1};
    return static_cast<DWORD>(
        std::clamp(limit, std::chrono::milliseconds::zero(), kLongest).count());
}

}  // namespace

TurnQueue::TurnQueue(const std::filesystem::path& file) : file_(file) {}

TurnQueue::~TurnQueue() {
    leave();
}

bool TurnQueue::isBusy() const {
    if (inside_) return true;
    const std::u16string name = nameOf(file_);
    const Handle queue(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, wide(name)));
    if (!queue) return false;
    const DWORD result = WaitForSingleObject(queue.get(), 0);
    if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) ReleaseMutex(queue.get());
    return result == WAIT_TIMEOUT;
}

bool TurnQueue::enter(std::chrono::milliseconds limit) {
    if (inside_) return true;
    Handle queue(queueOf(file_));
    if (!queue) return true;
    const DWORD result = WaitForSingleObject(queue.get(), milliseconds(limit));
    // Also when the one before ended without leaving.
    inside_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    if (inside_) place_ = reinterpret_cast<std::intptr_t>(queue.release());
    return inside_ || result != WAIT_TIMEOUT;
}

// A mutex tells nothing of its owner.
void TurnQueue::reserve() noexcept {}

bool TurnQueue::isReserved() const {
    return false;
}

void TurnQueue::leave() noexcept {
    if (!inside_) return;
    inside_ = false;
    const Handle queue(reinterpret_cast<HANDLE>(place_));
    ReleaseMutex(queue.get());
}

}  // namespace kap::platform
