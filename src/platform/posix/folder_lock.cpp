#include "platform/folder_lock.hpp"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <thread>

#include "platform/file_errors.hpp"
#include "platform/posix/descriptor.hpp"

namespace kap::platform {
namespace {

using std::chrono::steady_clock;

// The system's lock waits for ever or not at all.
bool lockBefore(int folder, steady_clock::time_point deadline) {
    constexpr std::chrono::milliseconds kLongestSleep{20};
    auto sleep = std::chrono::microseconds(200);
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR && (errno != EWOULDBLOCK || steady_clock::now() >= deadline)) {
            return false;
        }
        std::this_thread::sleep_for(sleep);
        sleep = std::min<std::chrono::microseconds>(sleep * 2, kLongestSleep);
    }
    return true;
}

// The lock belongs to the opened folder, so two threads exclude each other like two processes.
Descriptor lockedFolder(const std::filesystem::path& folder) {
    Descriptor opened(open(folder.empty() ? "." : folder.c_str(),  // NOLINT(*-vararg)
                           O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) {
        return opened;
    }
    if (!lockBefore(opened.get(), steady_clock::now() + folderLockLimit())) {
        const int reason = errno;
        opened = Descriptor();
        errno = reason;
    }
    return opened;
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder)
    : descriptor_(lockedFolder(folder).release()) {
    if (descriptor_ < 0) {
        throwFileError(lastError());
    }
}

std::optional<FolderLock> FolderLock::ifPossible(const std::filesystem::path& folder) {
    Descriptor locked = lockedFolder(folder);
    if (!locked) {
        return std::nullopt;
    }
    return FolderLock(locked.release());
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FolderLock::~FolderLock() {
    const Descriptor closing(descriptor_);
}

}  // namespace kap::platform
