#include "failing_memory.hpp"

#include <sqlite3.h>

#include <cstdlib>
#include <new>

namespace kap::faults {
namespace {

struct State {
    MemoryFault fault{};
    MemoryOutcome outcome{};
    bool active = false;
};

constinit thread_local State state;

bool failsNow(bool isMeant) noexcept {
    if (!state.active || !isMeant) {
        return false;
    }
    const std::int64_t number = ++state.outcome.requests;
    const MemoryFault& fault = state.fault;
    if (fault.nth == 0 || number < fault.nth || (number > fault.nth && !fault.andAllAfter)) {
        return false;
    }
    state.outcome.failed = true;
    return true;
}

sqlite3_mem_methods sqlitesOwn{};

void* allocateForSqlite(int size) {
    return failsNow(state.fault.ofSqlite) ? nullptr : sqlitesOwn.xMalloc(size);
}

void* growForSqlite(void* block, int size) {
    return failsNow(state.fault.ofSqlite) ? nullptr : sqlitesOwn.xRealloc(block, size);
}

// SQLite takes its functions before it is used for the first time.
const bool installed = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &sqlitesOwn);
    sqlite3_mem_methods ours = sqlitesOwn;
    ours.xMalloc = &allocateForSqlite;
    ours.xRealloc = &growForSqlite;
    // What it takes from small blocks that it has reserved would not be counted.
    sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &ours) == SQLITE_OK;
}();

void* allocate(std::size_t size) noexcept {
    return failsNow(state.fault.ofCpp) ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* allocateAligned(std::size_t size, std::size_t alignment) noexcept {
    const std::size_t whole = (size + alignment - 1) / alignment * alignment;
    return failsNow(state.fault.ofCpp)
               ? nullptr
               : std::aligned_alloc(alignment, whole == 0 ? alignment : whole);
}

void* orThrow(void* block) {
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

}  // namespace

void startMemory(const MemoryFault& fault) noexcept {
    if (!installed) {
        std::abort();
    }
    state = {fault, {}, true};
}

MemoryOutcome stopMemory() noexcept {
    state.active = false;
    return state.outcome;
}

}  // namespace kap::faults

using kap::faults::allocate;
using kap::faults::allocateAligned;
using kap::faults::orThrow;

void* operator new(std::size_t size) {
    return orThrow(allocate(size));
}
void* operator new[](std::size_t size) {
    return orThrow(allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return orThrow(allocateAligned(size, static_cast<std::size_t>(alignment)));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return orThrow(allocateAligned(size, static_cast<std::size_t>(alignment)));
}

void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    std::free(block);
}
