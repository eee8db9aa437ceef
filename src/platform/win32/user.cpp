#include <kaputil/platform/user.hpp>

#include <array>

#include "platform/win32/wide.hpp"

#include <winnetwk.h>

namespace kap::platform {

std::optional<String> userName() {
    std::array<char, 256> name{};
    auto length = static_cast<DWORD>(name.size());
    // Without a resource: the user who is logged on.
    if (WNetGetUserA(nullptr, name.data(), &length) != NO_ERROR) {
        return std::nullopt;
    }
    const std::string_view text(name.data());
    return text.empty() ? std::nullopt : std::optional(fromAnsi(text));
}

}  // namespace kap::platform
