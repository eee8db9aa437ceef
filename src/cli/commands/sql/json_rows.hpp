#pragma once

#include <iosfwd>

#include <kaputil/ado/recordset.hpp>

namespace kap::cli {

// Prints what a statement answered as one JSON object on one line:
//
//     {"columns":[{"name":"Codice","type":"varchar","size":3}],"rows":[["EUR"]],"rowsAffected":null}
//
// Null is null, a bit is true or false, a number of at most 15 digits is a number and one of more
// digits a text, so that none loses a digit on the way; everything else is a text. A statement that
// gave no rows has no columns and tells how many rows it wrote.
void printJson(std::ostream& out, ado::Recordset& answer);

}  // namespace kap::cli
