#pragma once

#include "data/driver.hpp"
#include "engine/catalog/schema_catalogue.hpp"

namespace kap::ado::embedded {

// What is in an open file, as a schema rowset: tables, columns, primary keys, indexes, types. A
// file is a catalogue without name; every table's owner is dbo. Temporary tables are not told.
[[nodiscard]] Result schemaRowset(const engine::SchemaCatalogue& catalogue, SchemaEnum kind,
                                  const SchemaRestrictions& wanted);

}  // namespace kap::ado::embedded
