#include "ado/embedded/functions/kept_values.hpp"

#include <compare>
#include <cstddef>
#include <new>

#include "ado/embedded/collation.hpp"

namespace kap::ado::embedded {
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

std::string_view textOfValue(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {text == nullptr ? "" : text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

KeptValue keptValue(const sqlite3_value* value) {
    KeptValue result(sqlite3_value_dup(value));
    if (result == nullptr) throw std::bad_alloc();
    return result;
}

int compareValues(sqlite3_value* left, sqlite3_value* right) {
    const int rank = rankOf(left);
    if (rank != rankOf(right)) return rank < rankOf(right) ? -1 : 1;
    if (rank == 0) return 0;
    if (rank == 2) return signOf(compareTexts(textOfValue(left), textOfValue(right)));
    if (rank == 3) {
        const auto bytes = [](sqlite3_value* value) {
            const auto* start = static_cast<const char*>(sqlite3_value_blob(value));
            return std::string_view(start == nullptr ? "" : start,
                                    static_cast<std::size_t>(sqlite3_value_bytes(value)));
        };
        return bytes(left).compare(bytes(right));
    }
    const bool whole =
        sqlite3_value_type(left) == SQLITE_INTEGER && sqlite3_value_type(right) == SQLITE_INTEGER;
    if (whole) return signOf(sqlite3_value_int64(left) <=> sqlite3_value_int64(right));
    return signOf(sqlite3_value_double(left) <=> sqlite3_value_double(right));
}

}  // namespace kap::ado::embedded
