#pragma once

#include <string_view>

#include "engine/catalog/schema_catalogue.hpp"

namespace kap::engine {

// Whether a check, a computed column or the filter of an index of the table names the column in
// what it was written as. Such a column keeps its name.
[[nodiscard]] bool isNamedByDefinitions(const SchemaCatalogue& catalogue, const Table& table,
                                        std::string_view column);

}  // namespace kap::engine
