#pragma once

#include <memory>

#include <sqlite3.h>

// Values that an aggregate keeps until it has seen all of its group.
namespace kap::engine {

struct FreeValue {
    void operator()(sqlite3_value* value) const { sqlite3_value_free(value); }
};
using KeptValue = std::unique_ptr<sqlite3_value, FreeValue>;

// A copy that outlives the call. Throws std::bad_alloc.
[[nodiscard]] KeptValue keptValue(const sqlite3_value* value);

// Negative, 0 or positive as the server orders them: nulls first, texts under the collation of the
// database.
[[nodiscard]] int compareValues(sqlite3_value* left, sqlite3_value* right);

}  // namespace kap::engine
