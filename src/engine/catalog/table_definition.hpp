#pragma once

#include <string>
#include <vector>

#include "engine/catalog/tables.hpp"

namespace kap::engine {

// A key of a table being created.
struct TableKey {
    std::string name;  // given, or made from the table's name
    bool primary = false;
    std::vector<std::string> columns;
    bool ignoresDuplicates = false;
};

// A table being created: what SQLite's schema cannot tell (identities, names of keys) and what it
// can.
struct TableDefinition {
    Table table;
    std::vector<TableKey> keys;
};

// A table to drop.
struct DroppedTable {
    std::string name;
    bool temporary = false;
};

}  // namespace kap::engine
