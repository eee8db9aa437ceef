#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

namespace kap::platform {

// How long a folder is waited for that somebody else has locked; a database is, too.
inline constexpr std::chrono::seconds kFolderLockLimit{30};

// Another limit for the whole process.
void setFolderLockLimit(std::chrono::milliseconds limit);
[[nodiscard]] std::chrono::milliseconds folderLockLimit();

// Keeps other threads and processes that lock the same folder waiting for as long as it lives. It
// leaves nothing behind, also when the process dies.
class FolderLock {
public:
    // Raises the file-system object's errors when the folder cannot be locked, 70 when somebody
    // else has it locked for longer than the limit.
    explicit FolderLock(const std::filesystem::path& folder);
    // The same, but nullopt when the folder cannot be locked.
    [[nodiscard]] static std::optional<FolderLock> ifPossible(const std::filesystem::path& folder);

    FolderLock(FolderLock&& other) noexcept;
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock();

private:
    explicit FolderLock(int descriptor) noexcept : descriptor_(descriptor) {}

    int descriptor_;
};

}  // namespace kap::platform
