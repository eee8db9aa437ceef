#pragma once

#include <string>
#include <string_view>

#include "tsql/type_spec.hpp"

struct sqlite3;

namespace kap::engine {

// The collation that SQLite has to be told for values of a type: KAP_CI for texts (see
// text_order.hpp), KAP_INSTANT for datetimeoffset, of which only the instant counts and not the
// clock that shows it, KAP_VARIANT for sql_variant; empty for what SQLite orders by itself.
[[nodiscard]] std::string_view collationOf(const tsql::TypeSpec& type);

// The name of the collation with which the file declares a column; empty when it cannot be told.
[[nodiscard]] std::string collationOfColumn(sqlite3* database, bool temporary,
                                            const std::string& table, const std::string& column);

// Makes the collations known to a connection, texts in today's order. Those that COLLATE names are
// made known when they are first met.
void registerCollations(sqlite3* database);

// Whether the indexes of the main file were made in the order of texts of older editions. Raises
// SqliteError for what is no database.
[[nodiscard]] bool hasFormerTextOrder(sqlite3* database);

// Texts in that order.
void registerFormerTextOrder(sqlite3* database);

}  // namespace kap::engine
