#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/catalog/schema_catalogue.hpp"

// What is asked of indexes by their numbers and names.
namespace kap::engine {

// An index with its number within its table: 1 is that of the primary key.
struct NumberedIndex {
    IndexInfo index;
    std::int64_t number = 0;
};

// All indexes of the file's tables, those that serve keys among them, table by table.
[[nodiscard]] std::vector<NumberedIndex> numberedIndexes(const SchemaCatalogue& catalogue);

// INDEX_COL: the name of a column of an index; columns count from 1. Null where there is none, as
// in the other two.
[[nodiscard]] Value indexColumn(const SchemaCatalogue& catalogue, const std::string& table,
                                std::int64_t index, std::int64_t column);

// INDEXKEY_PROPERTY, which knows ColumnId and IsDescending.
[[nodiscard]] Value indexKeyProperty(const SchemaCatalogue& catalogue, std::int64_t table,
                                     std::int64_t index, std::int64_t column,
                                     const std::string& property);

// INDEXPROPERTY of the index of that name.
[[nodiscard]] Value indexProperty(const SchemaCatalogue& catalogue, std::int64_t table,
                                  const std::string& index, const std::string& property);

}  // namespace kap::engine
