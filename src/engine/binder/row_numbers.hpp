#pragma once

#include <string>

#include "engine/binder/scope.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/query_tree.hpp"

// The numbers by which SQLite knows the rows of tables, and the tables that catch written rows
// with their numbers.
namespace kap::engine {

// What a query that stands for a table calls the numbers of its rows.
inline constexpr const char* kRowNumber = "kap row number";

// A name by which SQLite knows the row's number and that no column of the table hides.
[[nodiscard]] std::string rowNumberName(const Table& table);
// The number of a row of a source that is a stored table.
[[nodiscard]] sql::Expression rowNumberOf(const Source& source);

[[nodiscard]] sql::Database databaseOf(const Table& table);
// A stored table as FROM reads it.
[[nodiscard]] sql::TableName tableName(const Table& table, std::string alias = {});
// All rows of a table with their numbers as the column kRowNumber.
[[nodiscard]] sql::Select numberedRows(const Table& table);

enum class RowState { Inserted, Deleted };

// What caught rows of a table are known by: those of what its triggers write are kept apart.
[[nodiscard]] std::string captureKey(const Table& table);

// The table that holds the caught rows of a table, with its columns.
[[nodiscard]] Table capturedRows(const Table& table, RowState state);

}  // namespace kap::engine
