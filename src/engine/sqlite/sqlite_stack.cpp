#include "engine/sqlite/sqlite_stack.hpp"

#include <algorithm>
#include <cstddef>

#include "base/stack.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {
namespace {

// What SQLite takes for a plain statement, with as much again to be sure.
constexpr std::size_t kPlainStatement = std::size_t{24} * 1024;

int stackHolds(void* /*context*/, int /*action*/, const char* /*first*/, const char* /*second*/,
               const char* /*database*/, const char* /*trigger*/) {
    return stackLeft() < kPlainStatement ? SQLITE_DENY : SQLITE_OK;
}

}  // namespace

void watchStack(sqlite3* database) {
    sqlite3_set_authorizer(database, &stackHolds, nullptr);
}

void limitNesting(sqlite3* database) {
    constexpr std::size_t kLevel = 1024;  // twice what a level was seen to take
    constexpr std::size_t kMostExpressions = 1000;
    constexpr std::size_t kMostTerms = 500;
    const std::size_t left = stackLeft();
    if (left < kPlainStatement) {
        throw SqliteError(SQLITE_AUTH, kOutOfStack, 0);
    }
    const std::size_t levels = (left - kPlainStatement) / kLevel;
    sqlite3_limit(database, SQLITE_LIMIT_EXPR_DEPTH,
                  static_cast<int>(std::clamp<std::size_t>(levels, 1, kMostExpressions)));
    sqlite3_limit(database, SQLITE_LIMIT_COMPOUND_SELECT,
                  static_cast<int>(std::clamp<std::size_t>(levels, 2, kMostTerms)));
}

}  // namespace kap::engine
