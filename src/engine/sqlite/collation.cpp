#include "engine/sqlite/collation.hpp"

#include <cstddef>
#include <string_view>

#include "base/text_order.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {
namespace {

int compareForSqlite(void* /*context*/, int leftSize, const void* left, int rightSize,
                     const void* right) {
    const auto order =
        compareTexts({static_cast<const char*>(left), static_cast<std::size_t>(leftSize)},
                     {static_cast<const char*>(right), static_cast<std::size_t>(rightSize)});
    return std::is_lt(order) ? -1 : (std::is_gt(order) ? 1 : 0);
}

}  // namespace

void registerCollation(sqlite3* database) {
    if (sqlite3_create_collation_v2(database, kCollationName, SQLITE_UTF8, nullptr,
                                    &compareForSqlite, nullptr) != SQLITE_OK) {
        throw lastError(database);
    }
}

}  // namespace kap::engine
