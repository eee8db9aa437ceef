#pragma once

#include <cstddef>

#include <kaputil/automation/variant.hpp>

#include "data/column_store.hpp"
#include "data/driver.hpp"

// Between the stored form of a cell and the Variant that clients see.
namespace kap::ado {

[[nodiscard]] Variant toVariant(const ColumnInfo& column, const ColumnStore& store,
                                std::size_t row);
[[nodiscard]] Variant toVariant(const ColumnInfo& column, const Value& value);

// A client's value in the column's stored form, converted under the user's locale; Null and Empty
// are Null. Raises 3421 when it does not convert and -2147217887 when it does not fit.
[[nodiscard]] Value toCell(const ColumnInfo& column, const Variant& value);

// What the database holds in a cell: a replaced Null is Null.
[[nodiscard]] Value databaseValue(const ColumnInfo& column, const ColumnStore& store,
                                  std::size_t row);

}  // namespace kap::ado
