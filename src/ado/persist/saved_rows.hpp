#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ado/row_table.hpp"

// Recordsets in files: the schema of the columns and the rows, with what waits for a batch update,
// in the XML form that other programs read and write, too.
namespace kap::ado::persist {

// The text of these rows of a table, in UTF-8. Raises 3001 for a text that XML cannot hold.
[[nodiscard]] std::string writtenRows(const RowTable& table, const std::vector<std::size_t>& rows);

// The table that such a text holds, in UTF-8 or by its mark in UTF-16. Raises 3251 for the binary
// form, which is not read, and 3003 for anything else that is no saved recordset.
[[nodiscard]] std::shared_ptr<RowTable> readRows(std::string_view content);

}  // namespace kap::ado::persist
