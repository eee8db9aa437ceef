#include "platform/stack.hpp"

#include "platform/win32/wide.hpp"

namespace kap::platform {

// The system reserves the whole stack as one region and commits it page by page; the pages at its
// end are guards, which an overflow is told by.
StackBounds stackBounds() noexcept {
    constexpr std::uintptr_t kGuards = std::uintptr_t{4} * 4096;
    const auto* const thread = reinterpret_cast<const NT_TIB*>(NtCurrentTeb());
    MEMORY_BASIC_INFORMATION region{};
    if (VirtualQuery(thread->StackLimit, &region, sizeof(region)) == 0) {
        return {};
    }
    return {reinterpret_cast<std::uintptr_t>(region.AllocationBase) + kGuards,
            reinterpret_cast<std::uintptr_t>(thread->StackBase)};
}

}  // namespace kap::platform
