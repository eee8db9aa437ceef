#include "platform/folder_lock.hpp"

#include <functional>

#include <kaputil/automation/plain_text.hpp>

#include "base/unicode.hpp"
#include "platform/file_errors.hpp"
#include "platform/paths.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform {
namespace {

// A lock of the system's with a name made of the folder's: folders themselves cannot be locked. It
// goes with the last process that uses it.
std::u16string lockName(const std::filesystem::path& folder) {
    const std::u16string path = unicode::upper(
        pathText(std::filesystem::weakly_canonical(folder.empty() ? "." : folder)).view());
    const auto hash = static_cast<std::int64_t>(unicode::NameHash()(path) & 0x7FFFFFFF);
    return u"Local\\kaputil folder " + String(plain::text(hash)).units();
}

int lockFolder(const std::filesystem::path& folder) {
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error)) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return -1;
    }
    Handle lock(CreateMutexW(nullptr, FALSE, wide(lockName(folder))));
    if (!lock) {
        return -1;
    }
    // Also when another thread ended without giving it back: what it guards is replaced whole.
    const DWORD waited =
        WaitForSingleObject(lock.get(), static_cast<DWORD>(folderLockLimit().count()));
    if (waited == WAIT_TIMEOUT) {
        SetLastError(ERROR_ACCESS_DENIED);
    }
    if (waited == WAIT_FAILED || waited == WAIT_TIMEOUT) {
        return -1;
    }
    return HandleToLong(lock.release());
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder) : descriptor_(lockFolder(folder)) {
    if (descriptor_ < 0) {
        throwFileError(lastError());
    }
}

std::optional<FolderLock> FolderLock::ifPossible(const std::filesystem::path& folder) {
    const int locked = lockFolder(folder);
    return locked < 0 ? std::nullopt : std::optional(FolderLock(locked));
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FolderLock::~FolderLock() {
    if (descriptor_ >= 0) {
        const Handle closing(handleOf(descriptor_));
        ReleaseMutex(closing.get());
    }
}

}  // namespace kap::platform
