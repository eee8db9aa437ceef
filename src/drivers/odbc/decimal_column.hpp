#pragma once

#include <string_view>

#include "data/driver.hpp"

namespace kap::ado::odbc {

// Appends a decimal's text to its column. Of a wide one every digit is kept that a Decimal has, and
// the column's scale grows with its values: servers have decimals whose number of digits behind the
// point is not known before they come. Raises kMultipleStep for a number with more digits than can
// be kept exactly.
void appendDecimal(std::string_view text, ColumnInfo& column, ColumnStore& store);

}  // namespace kap::ado::odbc
