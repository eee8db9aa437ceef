#pragma once

#include <iosfwd>

#include <kaputil/ado/recordset.hpp>

namespace kap::cli {

// Prints the names of an open recordset's columns and its records as comma-separated values: Null
// as nothing, an empty text as "". Lines come out as soon as the next record has to be waited for.
// Ends when nobody reads them any more.
void printCsv(std::ostream& out, ado::Recordset& rows);

}  // namespace kap::cli
