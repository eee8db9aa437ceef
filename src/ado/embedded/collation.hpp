#pragma once

#include <compare>
#include <string_view>

#include <sqlite3.h>

namespace kap::ado::embedded {

// The name under which text columns ask SQLite for this order.
inline constexpr const char* kCollationName = "KAP_CI";

// The order of texts in the database, for UTF-8: case and trailing blanks do not count; accents
// keep words apart, but only after the base letters have been compared, so that "è" stands after
// "e" and before "f". Signs come before digits and digits before letters.
//
// The order is the same on every machine and in every locale: a file's indexes depend on it.
// Bytes that are not UTF-8 are compared as signs of their own.
[[nodiscard]] std::weak_ordering compareTexts(std::string_view left,
                                              std::string_view right) noexcept;

// Makes the collation known to a connection.
void registerCollation(sqlite3* database);

}  // namespace kap::ado::embedded
