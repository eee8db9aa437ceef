#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace kap {

// Where the stack of a thread lies. Empty: nothing is known of it.
struct StackBounds {
    std::uintptr_t low = 0;
    std::uintptr_t high = 0;

    [[nodiscard]] bool holds(std::uintptr_t address) const noexcept {
        return address > low && address <= high;
    }
};

// What is known of the present thread's stack; platform::learnStack() asks the host.
inline StackBounds& knownStack() noexcept {
    thread_local StackBounds bounds{};
    return bounds;
}

inline std::uintptr_t stackPlace() noexcept {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

// How many bytes the present thread's stack still has below here; the largest number where nothing
// is known of it.
inline std::size_t stackLeft() noexcept {
    const StackBounds& bounds = knownStack();
    const std::uintptr_t here = stackPlace();
    return bounds.holds(here) ? here - bounds.low : std::numeric_limits<std::size_t>::max();
}

// What every step of a recursion over a caller's data leaves: for one step more, for what is called
// at its bottom, and for raising an error there.
inline constexpr std::size_t kStackReserve = std::size_t{64} * 1024;

}  // namespace kap
