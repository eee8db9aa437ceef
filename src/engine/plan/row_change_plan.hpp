#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/row_change.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/server_errors.hpp"

namespace kap::engine {

// What SQLite is to run for the rows that a recordset changes by one plan of its own.
struct RowChangePlan {
    std::string sql;
    // What the statement is told, as ?1, ?2...: the values that are written and then those of the
    // criteria, for these columns.
    std::vector<Column> values;
    std::vector<Column> criteria;
    // What each row answers that it touches; none: nothing.
    std::vector<Column> answer;
};

// Whether the rows that a statement writes answer what the plan reads back.
enum class WrittenRows : std::uint8_t { Silent, Answering };

// The statement that writes rows, or reads them again. Raises ServerError for columns that are
// missing or that the database sets itself.
[[nodiscard]] RowChangePlan translateRowChange(const ado::RowPlan& plan, const Table& table,
                                               WrittenRows written);
// Reads what the plan reads back of the row whose number is ?1.
[[nodiscard]] RowChangePlan translateReadingAgain(const ado::RowPlan& plan, const Table& table);

// What a failure of such a change is told with.
[[nodiscard]] WriteContext contextOf(const ado::RowPlan& plan);

}  // namespace kap::engine
