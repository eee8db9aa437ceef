#pragma once

#include <string>
#include <string_view>

#include "engine/sqlite/definition_tree.hpp"

// What the file keeps of a definition that SQLite has no word for stands in comments, whose form
// is known here to those who write them (definition_writer.hpp) and who read them.
namespace kap::engine {

// Around what an expression was written as, and around the notes of an index.
inline constexpr std::string_view kSourceOpens = "/*=";
inline constexpr std::string_view kNotesOpen = "/*~";
inline constexpr std::string_view kCommentCloses = "*/";

// The words of those notes.
inline constexpr std::string_view kIgnoresNote = " ignore_dup_key";
inline constexpr std::string_view kIncludesNote = " include ";

// A text that ends no comment and begins none, and the text that it was.
[[nodiscard]] std::string withoutStars(std::string_view text);
[[nodiscard]] std::string withStars(std::string_view safe);

// The comment with what an expression was written as, with a blank before it.
[[nodiscard]] std::string sourceComment(std::string_view source);
// The comment of an index, with a blank before it; empty when there is nothing to note.
[[nodiscard]] std::string notesComment(const sql::IndexNotes& notes);

}  // namespace kap::engine
