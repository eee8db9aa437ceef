#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "engine/sqlite/expression_tree.hpp"
#include "engine/sqlite/query_tree.hpp"
#include "engine/sqlite/write_tree.hpp"
#include "tsql/statements.hpp"

// Statements of SQLite that change the schema, as trees: what the planner makes of the definitions
// of tables and indexes, and the triggers that catch rows. definition_writer.hpp writes them.
namespace kap::engine::sql {

// A definition that was read from the file may be another program's: what it says besides what
// stands here is kept as `others`, in its words, and written again.

// What the schema keeps of an expression. One that was read from the file is a Definition.
struct Formula {
    Expression value;
    // What it was written as, for whoever asks the database to describe itself; absent in a file
    // of before.
    std::optional<std::string> source = std::nullopt;
};

// A default with the name of its constraint, which may have none.
struct ColumnDefault {
    std::string name;
    Formula value;
};

struct ColumnDefinition {
    std::string name;
    std::string type = {};    // empty: any value
    std::string others = {};  // also a type that is no name in quotes
    std::string collation = {};
    bool notNull = false;
    bool numbersRows = false;
    std::optional<ColumnDefault> defaultValue = std::nullopt;
    std::optional<Formula> computed = std::nullopt;
};

// The column of that name is the number by which SQLite knows the row.
[[nodiscard]] inline ColumnDefinition rowNumbers(std::string name) {
    ColumnDefinition column{std::move(name)};
    column.numbersRows = true;
    return column;
}

// What SQLite has no word for in an index or a key.
struct IndexNotes {
    bool ignoresDuplicates = false;          // WITH (IGNORE_DUP_KEY = ON)
    std::vector<std::string> included = {};  // columns of INCLUDE
};

struct KeyConstraint {
    bool primary = false;
    std::vector<std::string> columns;
    IndexNotes notes = {};
};

struct CheckConstraint {
    Formula condition;
};

struct ForeignKey {
    std::vector<std::string> columns;
    std::string parent;
    std::vector<std::string> parentColumns;  // none: its primary key
    tsql::ReferenceAction onDelete = tsql::ReferenceAction::None;
    tsql::ReferenceAction onUpdate = tsql::ReferenceAction::None;
};

// All of it is `others`.
struct OtherConstraint {};

struct Constraint {
    std::string name;  // may be empty
    std::variant<KeyConstraint, CheckConstraint, ForeignKey, OtherConstraint> kind;
    std::string others = {};
};

struct CreateTable {
    TableName table;
    std::vector<ColumnDefinition> columns;
    std::vector<Constraint> constraints = {};
    std::string others = {};
};

struct CreateIndex {
    bool unique = false;
    Database database = Database::Main;
    std::string name;
    std::string table;
    std::vector<OrderTerm> terms;
    IndexNotes notes = {};
    std::optional<Formula> where = std::nullopt;
};

enum class RowEvent : std::uint8_t { Insert, Update, Delete };

// A temporary trigger that fires after each row.
struct CreateTrigger {
    std::string name;
    RowEvent event;
    TableName table;
    Expression when;
    std::vector<Write> steps;
};

enum class SchemaObject : std::uint8_t { Table, Index, Trigger };

struct Drop {
    SchemaObject kind;
    Database database;
    std::string name;
    bool ifExists = false;
};

struct AddColumn {
    ColumnDefinition column;
};

struct DropColumn {
    std::string column;
};

struct RenameTable {
    std::string name;
};

struct RenameColumn {
    std::string column;
    std::string name;
};

struct AlterTable {
    TableName table;
    std::variant<AddColumn, DropColumn, RenameTable, RenameColumn> change;
};

// Orders all indexes of a table anew.
struct Reindex {
    TableName table;
};

using SchemaChange =
    std::variant<CreateTable, CreateIndex, CreateTrigger, Drop, AlterTable, Reindex>;

}  // namespace kap::engine::sql
