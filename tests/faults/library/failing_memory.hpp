#pragma once

#include <cstdint>

// Stands between a program and its memory: a test lets the n-th request for memory fail, of C++ and
// of SQLite alike.
//
// Only requests of the thread that has started are counted. The operators are replaced in the
// program that this is compiled into.
namespace kap::faults {

struct MemoryFault {
    std::int64_t nth = 1;      // of the requests, from 1; 0: none
    bool andAllAfter = false;  // memory that stays exhausted
    bool ofSqlite = true;      // whether SQLite's requests are among them
    bool ofCpp = true;         // whether those of C++ are
};

struct MemoryOutcome {
    std::int64_t requests = 0;  // that might have failed
    bool failed = false;
};

// From now on in this thread, until `stopMemory`.
void startMemory(const MemoryFault& fault) noexcept;
MemoryOutcome stopMemory() noexcept;

}  // namespace kap::faults
