#include "platform/folder_names.hpp"

#include <memory>
#include <string_view>

#include "platform/win32/wide.hpp"

namespace kap::platform {
namespace {

struct CloseSearch {
    void operator()(void* search) const noexcept { FindClose(search); }
};

}  // namespace

std::vector<std::filesystem::path> namesIn(const std::filesystem::path& folder,
                                           std::error_code& error) {
    std::vector<std::filesystem::path> names;
    WIN32_FIND_DATAW entry{};
    const HANDLE found = FindFirstFileW((folder / L"*").c_str(), &entry);
    if (found == INVALID_HANDLE_VALUE) {
        // The root of an empty disk has not even the two names of every folder.
        const DWORD failure = GetLastError();
        error = failure == ERROR_FILE_NOT_FOUND ? std::error_code() : systemError(failure);
        return names;
    }
    const std::unique_ptr<void, CloseSearch> search(found);
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") {
            names.emplace_back(name);
        }
    } while (FindNextFileW(search.get(), &entry) != 0);
    const DWORD ended = GetLastError();
    error = ended == ERROR_NO_MORE_FILES ? std::error_code() : systemError(ended);
    return names;
}

}  // namespace kap::platform
