#pragma once

#include <optional>
#include <string_view>

#include "engine/sqlite/definition_tree.hpp"

// The texts by which the file knows its tables and indexes, read into the trees that
// definition_writer.hpp writes. What those have no place for stands in their `others`.
namespace kap::engine {

// Nothing for a text in words that only SQLite knows, and for what is no ordinary table.
[[nodiscard]] std::optional<sql::CreateTable> readTable(std::string_view createTable);
// A constraint as it stands in such a text.
[[nodiscard]] std::optional<sql::Constraint> readConstraint(std::string_view constraint);
// Nothing for another program's index.
[[nodiscard]] std::optional<sql::CreateIndex> readIndex(std::string_view createIndex);

// The column or the constraint of that name (case ignored), or null.
[[nodiscard]] sql::ColumnDefinition* findColumn(sql::CreateTable& table, std::string_view name);
[[nodiscard]] sql::Constraint* findConstraint(sql::CreateTable& table, std::string_view name);

}  // namespace kap::engine
