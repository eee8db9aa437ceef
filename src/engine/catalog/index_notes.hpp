#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/sqlite/definition_tree.hpp"

namespace kap::engine {

// What the text of an index has noted of what SQLite has no word for.
[[nodiscard]] sql::IndexNotes notesOf(std::string_view createIndex);

// What "ON CONFLICT" takes for the keys of a table that ignore duplicates: their columns, as they
// stand in its text, each with the note behind them within the brackets.
[[nodiscard]] std::vector<std::string> conflictTargetsOfKeys(std::string_view createTable);
// Whether the key of that name is one of them.
[[nodiscard]] bool keyIgnores(std::string_view createTable, std::string_view key);

// What "ON CONFLICT" takes for an index that ignores duplicates: its columns and its filter, as
// they stand in its text. Nothing for any other index.
[[nodiscard]] std::optional<std::string> conflictTarget(std::string_view createIndex);

}  // namespace kap::engine
