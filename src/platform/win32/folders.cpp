#include <kaputil/platform/folders.hpp>

#include <array>
#include <vector>

#include "platform/paths.hpp"
#include "platform/win32/wide.hpp"

namespace kap::platform {

namespace fs = std::filesystem;

fs::path settingsFolder() {
    std::array<char, 255> folder{};
    const UINT length = GetWindowsDirectoryA(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0 || length >= folder.size()) {
        return {};
    }
    return fs::path(fromAnsi({folder.data(), length}).units());
}

fs::path dataFolder() {
    constexpr const wchar_t* kVariable = L"APPDATA";
    std::vector<wchar_t> folder(GetEnvironmentVariableW(kVariable, nullptr, 0));
    const DWORD length =
        GetEnvironmentVariableW(kVariable, folder.data(), static_cast<DWORD>(folder.size()));
    const std::wstring_view text(folder.data(), folder.empty() ? 0 : length);
    return text.empty() ? settingsFolder() / "kaputil" : fs::path(text) / "kaputil";
}

fs::path applicationFolder() {
    constexpr std::size_t kLongest = 1 << 15;
    std::vector<wchar_t> file(MAX_PATH);
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
        if (length == 0) {
            return fs::current_path();
        }
        if (length < file.size() || file.size() >= kLongest) {
            return fs::path(std::wstring_view(file.data(), length)).parent_path();
        }
        file.resize(file.size() * 2);
    }
}

}  // namespace kap::platform
