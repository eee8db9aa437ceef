#pragma once

#include <functional>
#include <string>

#include "engine/catalog/counters.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/sqlite/file_connection.hpp"
#include "tsql/messages.hpp"

namespace kap::engine {

// What a check has found: one of the messages ...Fault, of which StructureFault tells of the file
// itself, and its sentence.
using Finding = std::function<void(tsql::Message message, const std::string& sentence)>;

// Compares all that a database holds twice, or that one part of it says of another: the file's own
// structure, indexes with their tables, keys with the rows they refer to, values with the types and
// lengths of their columns, row versions with their counter, stored texts with the grammar. A value
// that was changed into another one of its column, and stands in no index, cannot be told.
//
// To be called within a transaction. Raises SqliteError when the file cannot be read at all.
void checkDatabase(FileConnection& connection, SchemaCatalogue& catalogue, Counters& counters,
                   const Finding& found);

}  // namespace kap::engine
