#pragma once

#include <cstdint>
#include <functional>

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

namespace kap::host {

// Told how many rows are written, of how many, after each; of 0 until the last have come.
using ExportProgress = std::function<void(std::int64_t done, std::int64_t all)>;

// Writes the rows of a query into a text file for other programs; true when it was done.
//
// `sNomeTxt` is the file's name in the folder `sPathTxt`, which gets a "\" at its end in the
// caller's variable when it has none. The file begins empty. `connessione` is an open connection,
// or a connection string that is opened in the caller's variable.
//
// How the lines look is said by the section of the file's name in Schema.ini, in the same folder:
// with `lRicreoSchemaIni` it is written anew from the query's fields, key by key, as lines of fixed
// length in code page 850; otherwise it is used as it stands. What such a section can say is told
// in the text source's schema: formats, character sets, digits, date formats.
//
// A time that is too long for its column, as one from ten o'clock on is in a schema of the query's
// fields, is written to the minute. Texts and dates stand at the left of their columns, numbers at
// the right. A value that is the euro sign alone, and Null, are written as "EUR" cut to the
// column's width. Fields without a column of their name are left out; columns without a field stay
// blank.
//
// False, with a message box, for a field of a type that cannot be described, and for a Schema.ini
// that is to be used and is not there. Everything else raises: the errors of the file-system object
// and of the query, and -2147217833 for a value that does not fit into its column; its text names
// the row and the column. The file may then be empty or written in part.
KAPUTIL_EXPORT bool EsportaTXT(ByRef<String> stringaSql, ByRef<Variant> connessione,
                               ByRef<String> sNomeTxt, ByRef<String> sPathTxt,
                               ByRef<bool> lRicreoSchemaIni = true,
                               const ExportProgress& progress = {});

}  // namespace kap::host
