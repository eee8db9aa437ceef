#include <kaputil/platform/keyboard.hpp>

#include <windows.h>

#include <ranges>

namespace kap::platform {

void pressTogether(std::span<const VirtualKey> keys) {
    for (const VirtualKey key : keys) {
        keybd_event(static_cast<BYTE>(key), 0, 0, 0);
    }
    for (const VirtualKey key : keys | std::views::reverse) {
        keybd_event(static_cast<BYTE>(key), 0, KEYEVENTF_KEYUP, 0);
    }
}

}  // namespace kap::platform
