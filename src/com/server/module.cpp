#include "com/server/module.hpp"

#include <vector>

#include "platform/win32/wide.hpp"

namespace kap::com {
namespace {

HMODULE module = nullptr;

}  // namespace

HMODULE thisModule() noexcept {
    return module;
}

void setModule(HMODULE loaded) noexcept {
    module = loaded;
}

std::u16string modulePath() {
    std::vector<wchar_t> path(MAX_PATH);
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            return std::u16string(platform::narrowView(path.data(), length));
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace kap::com
