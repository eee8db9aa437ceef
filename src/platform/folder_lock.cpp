#include "platform/folder_lock.hpp"

#include <atomic>

namespace kap::platform {
namespace {

std::atomic<std::chrono::milliseconds>& chosenLimit() {
    static std::atomic<std::chrono::milliseconds> limit{kFolderLockLimit};
    return limit;
}

}  // namespace

void setFolderLockLimit(std::chrono::milliseconds limit) {
    chosenLimit() = limit;
}

std::chrono::milliseconds folderLockLimit() {
    return chosenLimit();
}

}  // namespace kap::platform
