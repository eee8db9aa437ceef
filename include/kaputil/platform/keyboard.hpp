#pragma once

#include <cstdint>
#include <span>

#include <kaputil/base/export.hpp>

namespace kap::platform {

// The keys that the library presses, by their virtual-key codes.
enum class VirtualKey : std::uint8_t {
    Tab = 9,
    Shift = 16,
    Control = 17,
    Alt = 18,
    PageUp = 33,
    PageDown = 34,
    End = 35,
    Home = 36,
    Up = 38,
    Down = 40,
    C = 67,
};

// Presses the keys in their order and releases them in reverse, for whatever window has the
// keyboard. Where there is no screen, or it takes no such events, nothing is pressed, a warning
// goes to the message log, and nothing is raised.
KAPUTIL_EXPORT void pressTogether(std::span<const VirtualKey> keys);

}  // namespace kap::platform
