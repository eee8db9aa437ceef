#pragma once

#include <cstddef>
#include <functional>

#include "ado/criteria_parser.hpp"
#include "ado/row_table.hpp"

namespace kap::ado {

// Whether a row of a table meets a condition.
using RowTest = std::function<bool(std::size_t row)>;

// Makes the test of a condition on a table, which must outlive it. Null meets no comparison but
// `= Null`. Texts compare without regard to case and trailing blanks; in LIKE `*` and `%` stand for
// any characters. A date between # is read as year-month-day or month/day/year, one in quotes as
// the user writes it.
//
// Raises 3265 for a column that does not exist and 3001 for a value that is none of the column's
// type or an operator that the type does not have.
[[nodiscard]] RowTest rowTest(const RowTable& table, const CriteriaNode& criteria);

}  // namespace kap::ado
