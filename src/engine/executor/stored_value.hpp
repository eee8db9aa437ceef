#pragma once

#include "data/driver.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {

// A client's value as the column keeps it: converted, rounded, padded and checked by the rules of
// the dialect's assignments. Raises ServerError: 8152 for what is too long, 220 and 8115 for what
// is too large, 242 for dates that the column cannot hold, and the conversions' own.
[[nodiscard]] Value storedValue(const ado::ColumnValue& value, const Column& column);

// A whole number, or `otherwise` for null and for anything else.
[[nodiscard]] std::int64_t wholeOr(const Value& value, std::int64_t otherwise);

}  // namespace kap::engine
