#pragma once

#include <string_view>

#include "ado/driver.hpp"

namespace kap::ado::odbc {

// Appends a decimal's text to its column. Servers have decimals whose number of digits behind the
// point is not known before they come: then the column gets another scale, and what is in the store
// is brought to it. Raises kMultipleStep for a number with more digits than can be kept exactly.
void appendDecimal(std::string_view text, ColumnInfo& column, ColumnStore& store);

// Whether the announced precision leaves open how many digits come.
[[nodiscard]] bool hasOpenScale(const ColumnInfo& column);

}  // namespace kap::ado::odbc
