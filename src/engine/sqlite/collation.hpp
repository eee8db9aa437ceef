#pragma once

#include <string>

#include "tsql/type_spec.hpp"

struct sqlite3;

namespace kap::engine {

// What a value's text in SQL is followed by where SQLite has to be told the order of its type:
// " COLLATE KAP_CI" for texts (see text_order.hpp), " COLLATE KAP_INSTANT" for datetimeoffset, of
// which only the instant counts and not the clock that shows it; empty for what SQLite orders by
// itself.
[[nodiscard]] std::string collationText(const tsql::TypeSpec& type);

// Makes the collations known to a connection, texts in today's order.
void registerCollations(sqlite3* database);

// Whether the indexes of the main file were made in the order of texts of older editions. Raises
// SqliteError for what is no database.
[[nodiscard]] bool hasFormerTextOrder(sqlite3* database);

// Texts in that order.
void registerFormerTextOrder(sqlite3* database);

}  // namespace kap::engine
