#pragma once

#include <iosfwd>

#include <kaputil/ado/recordset.hpp>

#include "cli/output/terminal.hpp"

namespace kap::cli {

// Prints the rows as a table with its columns' names above and the number of rows below; numbers
// stand at the right, Nulls are shown as NULL. On a terminal long texts are cut; elsewhere
// everything is printed.
void printTable(std::ostream& out, ado::Recordset& rows, const Terminal& terminal);

}  // namespace kap::cli
