#pragma once

#include <compare>
#include <cstddef>
#include <string_view>

#include "data/driver.hpp"

namespace kap::ado {

// The order of decimals in plain text, as they are kept (see ColumnInfo::wideDecimal); an empty
// text is 0.
[[nodiscard]] std::weak_ordering compareDecimals(std::string_view left, std::string_view right);

// The order of two cells of a column for Sort, Find and Filter; Null comes first. A replaced Null
// counts as what it reads. Texts have the order of the embedded database, so that what a client
// sorts stands as if the query had sorted it.
[[nodiscard]] std::weak_ordering compareCells(const ColumnInfo& column, const ColumnStore& store,
                                              std::size_t left, std::size_t right);

}  // namespace kap::ado
