#include "platform/folder_lock.hpp"

#include <fcntl.h>
#include <sys/file.h>

#include "platform/file_errors.hpp"
#include "platform/posix/descriptor.hpp"

namespace kap::platform {
namespace {

// The lock belongs to the opened folder, so two threads exclude each other like two processes.
Descriptor lockedFolder(const std::filesystem::path& folder) {
    Descriptor opened(open(folder.empty() ? "." : folder.c_str(),  // NOLINT(*-vararg)
                           O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) {
        return opened;
    }
    while (flock(opened.get(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            return Descriptor();
        }
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
