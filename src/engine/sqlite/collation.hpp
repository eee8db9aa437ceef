#pragma once

struct sqlite3;

namespace kap::engine {

// The name under which text columns ask SQLite for the order of texts (see text_order.hpp).
inline constexpr const char* kCollationName = "KAP_CI";

// Makes the collation known to a connection.
void registerCollation(sqlite3* database);

}  // namespace kap::engine
