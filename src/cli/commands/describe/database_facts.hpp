#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

// What a database is made of, read from the catalogue views of the dialect (sys.tables and so on).
namespace kap::cli {

struct ColumnFact {
    std::string name;
    std::string type;  // "varchar(30)", "decimal(12,6)"
    bool nullable = false;
    bool identity = false;
    bool computed = false;
    std::string defaultValue;  // the definition of its default; empty when it has none
};

struct IndexFact {
    std::string name;
    bool unique = false;
    bool primary = false;
    std::vector<std::string> columns;
};

struct ForeignKeyFact {
    std::string name;
    std::vector<std::string> columns;
    std::string target;  // the table referred to, as TableFact::name has it
    std::vector<std::string> targetColumns;
    std::string onDelete;  // "NO_ACTION", "CASCADE", ...
};

// A check, trigger, view, procedure or function.
struct ModuleFact {
    std::string name;
    std::string kind;  // "view", "procedure", "function"; empty for checks and triggers
    std::string definition;
};

struct TableFact {
    std::string name;  // with its schema unless that is dbo
    std::int64_t rows = 0;
    std::vector<ColumnFact> columns;
    std::vector<IndexFact> indexes;
    std::vector<ForeignKeyFact> foreignKeys;
    std::vector<ModuleFact> checks;
    std::vector<ModuleFact> triggers;
};

struct DatabaseFacts {
    std::optional<std::int64_t> bytes;  // of the file, where the database is one
    std::vector<TableFact> tables;      // by name
    std::vector<ModuleFact> modules;    // by kind and name
};

// One query a catalogue view, and one a table for the number of its rows. Raises the database's
// errors; a database that has no such views is told by its own.
[[nodiscard]] DatabaseFacts readDatabaseFacts(ado::Connection& connection,
                                              const std::optional<std::string>& table);

}  // namespace kap::cli
