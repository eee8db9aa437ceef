#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/sqlite/definition_tree.hpp"

// The file holds checks, defaults, computed columns and filters of indexes in SQLite's words; what
// they were written as stands behind them in a comment, for whoever asks the database to describe
// itself.
namespace kap::engine {

struct Column;

// What such an expression was written as, also when brackets are around it; nothing in a file of
// before.
[[nodiscard]] std::optional<std::string> sourceOf(std::string_view sql);
[[nodiscard]] std::string withoutSource(const std::string& sql);

// The same in brackets, as the views tell it; without a source SQLite's words.
[[nodiscard]] std::string shownDefinition(std::string_view sql);
[[nodiscard]] std::string shownDefinition(const sql::Formula& formula);
// What a column's default or computed value was written as, without brackets of our own.
[[nodiscard]] std::string shownSource(const Column& column);

// What something was written as, which calls a column by its new name.
[[nodiscard]] std::string withColumnRenamed(const std::string& source, std::string_view before,
                                            const std::string& after);

// The text of a view, procedure, function or trigger that goes by another name, in the same schema.
[[nodiscard]] std::string withObjectName(const std::string& text, const std::string& name);

// The text of ALTER VIEW and the like as the CREATE that makes the same.
[[nodiscard]] std::string asCreation(const std::string& text);

}  // namespace kap::engine
