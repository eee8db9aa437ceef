#pragma once

#include <cstddef>
#include <string>

#include "data/column_store.hpp"
#include "data/driver.hpp"

namespace kap::ado {

// Appends the plain text of a stored cell, the same whatever the user's language: numbers with '.'
// and all decimals of their type, bits as 0 and 1, dates as "2025-03-31 10:30:00", bytes as
// "0x0A1B", identifiers without braces, texts as they are. False, and nothing, for Null.
bool appendCellText(const ColumnInfo& column, const ColumnStore& store, std::size_t row,
                    std::string& text);

}  // namespace kap::ado
