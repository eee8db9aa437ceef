#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "engine/sqlite/sqlite.hpp"
#include "engine/values/error_slot.hpp"
#include "engine/values/value.hpp"

// Rows that depend on values of the row beside them, which SQLite knows only of table-valued
// functions:
//
//     kap_rows_of(query, a1, a2, ...)      the rows of a query in SQLite's words whose ?1, ?2 and
//                                          so on are these values
//     kap_rows_by(function, a1, a2, ...)   those that a function of the host gives
//
// Their columns are called c1, c2 and so on; what a row has not is null.
namespace kap::engine {

inline constexpr std::size_t kRowFunctionColumns = 256;
inline constexpr std::size_t kRowFunctionArguments = 100;

using GivenRows = std::vector<std::vector<Value>>;
using RowHost =
    std::function<GivenRows(const std::string& function, const std::vector<Value>& arguments)>;

// Errors go to the slot, which must live as long as the connection; `host` serves kap_rows_by.
void registerRowFunctions(sqlite3* connection, ErrorSlot& slot, RowHost host);

}  // namespace kap::engine
