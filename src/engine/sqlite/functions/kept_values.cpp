#include "engine/sqlite/functions/kept_values.hpp"

#include <compare>
#include <new>

#include "base/text_order.hpp"
#include "engine/sqlite/functions/c_border.hpp"

namespace kap::engine {
namespace {

// Nulls first, then numbers, then texts, then bytes.
int rankOf(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL:
            return 0;
        case SQLITE_TEXT:
            return 2;
        case SQLITE_BLOB:
            return 3;
        default:
            return 1;
    }
}

int signOf(std::partial_ordering order) {
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

}  // namespace

KeptValue keptValue(const sqlite3_value* value) {
    KeptValue result(sqlite3_value_dup(value));
    if (result == nullptr) throw std::bad_alloc();
    return result;
}

int compareValues(sqlite3_value* left, sqlite3_value* right) {
    const int rank = rankOf(left);
    if (rank != rankOf(right)) return rank < rankOf(right) ? -1 : 1;
    if (rank == 0) return 0;
    if (rank == 2) return signOf(compareTexts(textBytes(left), textBytes(right)));
    if (rank == 3) {
        return blobBytes(left).compare(blobBytes(right));
    }
    const bool whole =
        sqlite3_value_type(left) == SQLITE_INTEGER && sqlite3_value_type(right) == SQLITE_INTEGER;
    if (whole) return signOf(sqlite3_value_int64(left) <=> sqlite3_value_int64(right));
    return signOf(sqlite3_value_double(left) <=> sqlite3_value_double(right));
}

}  // namespace kap::engine
