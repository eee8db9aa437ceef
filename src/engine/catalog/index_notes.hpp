#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kap::engine {

// What SQLite has no word for in an index stands in its text as a comment behind its columns.
struct IndexNotes {
    bool ignoresDuplicates = false;     // WITH (IGNORE_DUP_KEY = ON)
    std::vector<std::string> included;  // columns of INCLUDE
};

// The comment with a blank before it; empty when there is nothing to note.
[[nodiscard]] std::string commentOf(const IndexNotes& notes);
// What the text of an index has noted.
[[nodiscard]] IndexNotes notesOf(std::string_view createIndex);

// The text of an index whose included column has got another name.
[[nodiscard]] std::string withIncludedRenamed(const std::string& createIndex,
                                              std::string_view before, const std::string& after);

// What "ON CONFLICT" takes for the keys of a table that ignore duplicates: their columns, as they
// stand in its text, each with the note behind them within the brackets.
[[nodiscard]] std::vector<std::string> conflictTargetsOfKeys(std::string_view createTable);
// Whether the key of that name is one of them.
[[nodiscard]] bool keyIgnores(std::string_view createTable, std::string_view key);

// What "ON CONFLICT" takes for an index that ignores duplicates: its columns and its filter, as
// they stand in its text. Nothing for any other index.
[[nodiscard]] std::optional<std::string> conflictTarget(std::string_view createIndex);

}  // namespace kap::engine
