#pragma once

#include "data/driver.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {

// A client's value for a column as the column keeps it: converted, rounded, padded and checked by
// the rules of the dialect's assignments. `given` says what its type is. Raises ServerError: 8152
// for what is too long, 220 and 8115 for what is too large, 242 for dates that the column cannot
// hold, and the conversions' own.
[[nodiscard]] Value storedValue(const ado::RowColumn& given, const Value& value,
                                const Column& column);

// Whether clients get values of the type in another form than the file has them: dates to 100
// nanoseconds and wide decimals as texts.
[[nodiscard]] bool isTold(const tsql::TypeSpec& type);

// A value in storage form as clients get it.
[[nodiscard]] Value toldValue(const Value& value, const tsql::TypeSpec& type);

// The type of a result's column in storage form, and a cell of it brought back to that form.
[[nodiscard]] tsql::TypeSpec storedType(const ado::ColumnInfo& column);
[[nodiscard]] Value storedCell(const ado::ColumnInfo& column, const ado::ColumnStore& store,
                               std::size_t row);

// A whole number, or `otherwise` for null and for anything else.
[[nodiscard]] std::int64_t wholeOr(const Value& value, std::int64_t otherwise);

}  // namespace kap::engine
