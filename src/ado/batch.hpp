#pragma once

#include <cstddef>
#include <vector>

#include "ado/row_cursor.hpp"
#include "data/driver.hpp"

namespace kap::ado {

// Writes the rows that wait for it. Each is tried, whatever becomes of the others; the answer are
// the failures, in the rows' order. What failed stays waiting, with its status.
[[nodiscard]] std::vector<DriverError> updateBatch(RowCursor& cursor, Session& session,
                                                   const std::vector<std::size_t>& rows);

// Forgets the waiting changes of these rows.
void cancelBatch(RowCursor& cursor, const std::vector<std::size_t>& rows);

// Reads rows again: what is shown, or only the underlying values that the next update compares
// with. Each is tried; the answer are the failures.
[[nodiscard]] std::vector<DriverError> resync(RowCursor& cursor, Session& session,
                                              const std::vector<std::size_t>& rows,
                                              ResyncEnum values);

}  // namespace kap::ado
