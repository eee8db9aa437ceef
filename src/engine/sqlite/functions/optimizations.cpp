#include "engine/sqlite/functions/optimizations.hpp"

#include <sqlite3.h>

namespace kap::engine {

namespace {

// SQLite's own numbers of the two optimisations; it has no public name for them.
constexpr unsigned kBloomFilter = 0x00080000;
constexpr unsigned kBloomPulldown = 0x00100000;
// Later versions hash all texts alike.
constexpr int kFirstSafeVersion = 3042000;

}  // namespace

void disableUnsafeOptimizations(sqlite3* connection) {
    if (sqlite3_libversion_number() >= kFirstSafeVersion) return;
    sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, connection, kBloomFilter | kBloomPulldown);
}

}  // namespace kap::engine
