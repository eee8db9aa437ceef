#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ado/embedded/catalogue.hpp"
#include "tsql/type_spec.hpp"

namespace kap::ado::embedded {

enum class StatementKind {
    Select,
    Insert,
    Update,
    Delete,
    CreateTable,
    DropTable,
    BeginTransaction,
    CommitTransaction,
    RollbackTransaction,
};

/// What a result says about one of its columns.
struct ResultColumn {
    std::string name;  ///< empty for an expression without alias
    tsql::TypeSpec type;
    bool nullable = true;
    std::string baseTable;   ///< empty for an expression
    std::string baseColumn;  ///< empty for an expression
    bool key = false;        ///< part of the base table's primary key
    bool identity = false;
    bool rowVersion = false;
};

/// A key of a table being created.
struct TableKey {
    std::string name;  ///< given, or made from the table's name
    bool primary = false;
    std::vector<std::string> columns;
};

/// A table being created: what SQLite's schema cannot tell (identities, names of keys) and what it
/// can.
struct TableDefinition {
    Table table;
    std::vector<TableKey> keys;
};

/// A table to drop.
struct DroppedTable {
    std::string name;
    bool temporary = false;
};

/// One statement of the dialect, ready for SQLite.
///
/// `sql` is run in order, in one transaction; all but the last return no rows. It calls the
/// functions that registerFunctions() provides and, in writes, kap_rowversion() and
/// kap_identity('table'), which the session provides. Values are in storage form: see value.hpp.
struct Translation {
    StatementKind kind = StatementKind::Select;
    std::vector<std::string> sql;
    std::vector<ResultColumn> columns;  ///< of a Select
    bool writes = false;
    std::string table;                       ///< the table written, in the catalogue's spelling
    std::optional<TableDefinition> created;  ///< of a CreateTable
    std::vector<DroppedTable> dropped;       ///< of a DropTable
    int line = 1;                            ///< of the statement, within the script
};

}  // namespace kap::ado::embedded
