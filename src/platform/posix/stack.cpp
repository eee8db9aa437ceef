#include "platform/stack.hpp"

#include <pthread.h>

namespace kap::platform {

StackBounds stackBounds() noexcept {
    pthread_attr_t attributes{};
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return {};
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    const bool told = pthread_attr_getstack(&attributes, &lowest, &size) == 0 &&
                      pthread_attr_getguardsize(&attributes, &guard) == 0;
    pthread_attr_destroy(&attributes);
    if (!told) {
        return {};
    }
    const auto low = reinterpret_cast<std::uintptr_t>(lowest);
    return {low + guard, low + size};
}

}  // namespace kap::platform
