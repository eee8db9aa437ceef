#pragma once

#include <kaputil/automation/variant.hpp>

#include "data/driver.hpp"

namespace kap::ado::late_bound {

// Reads what a recordset of another maker holds, from its current row on: its columns as its fields
// describe them, and its rows. A closed one has neither.
[[nodiscard]] Result resultOf(const Variant& recordset);

}  // namespace kap::ado::late_bound
