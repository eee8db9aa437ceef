#pragma once

#include "base/stack.hpp"

namespace kap::platform {

// The stack of the present thread; empty where the host does not tell.
[[nodiscard]] StackBounds stackBounds() noexcept;

// Lets stackLeft() know the present thread's stack. What takes a caller's data into recursions
// begins with it. A thread is asked once, and again when it goes on on another stack, as fibers do.
inline void learnStack() noexcept {
    if (!knownStack().holds(stackPlace())) {
        knownStack() = stackBounds();
    }
}

}  // namespace kap::platform
