#pragma once

#include <string>
#include <vector>

#include "engine/binder/binder.hpp"
#include "engine/plan/statement_plan.hpp"
#include "engine/sqlite/definition_tree.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// Puts a table together, column by column and constraint by constraint, and checks that they go
// with each other. It begins with no columns, or with those of a table that is being altered.
class TableBuilder {
public:
    // A new table. Errors 2760 and 2714 when the name cannot be given.
    TableBuilder(const NameScope& names, const tsql::ObjectName& name, int line);
    // More columns and constraints for a table that is there.
    TableBuilder(const NameScope& names, const Table& table);
    // A table of the script's own, under the name of the temporary table that holds its rows.
    TableBuilder(const NameScope& names, const std::string& temporaryName);

    // A name that is taken by a constraint of the table.
    void reserveName(const std::string& name) { takenNames_.push_back(name); }

    // Columns first, then what names them.
    void add(const tsql::TableElements& elements);
    void add(Column column, int line);

    [[nodiscard]] const Table& table() const { return definition_.table; }
    [[nodiscard]] const std::vector<TableKey>& keys() const { return definition_.keys; }
    // Checks and foreign keys.
    [[nodiscard]] const std::vector<sql::Constraint>& constraints() const { return constraints_; }
    // The table with the texts that make it.
    [[nodiscard]] CreateTablePlan plan() const;

private:
    [[nodiscard]] Table& own() { return definition_.table; }
    [[nodiscard]] std::string shownName() const { return std::string(table().shown()); }
    [[nodiscard]] Column& requireColumn(const std::string& name, int line);
    void addColumn(const tsql::ColumnDefinition& definition, const tsql::TableElements& elements);
    void addComputed(const tsql::ColumnDefinition& definition);
    void checkOnlyRowVersion(const Column& column, int line) const;
    [[nodiscard]] Identity identityOf(const tsql::ColumnDefinition& column);
    [[nodiscard]] std::int64_t wholeConstant(const tsql::Expression& expression,
                                             const tsql::ColumnDefinition& column);
    void setDefault(Column& column, const tsql::DefaultOption& option, int line);
    void addKey(const tsql::KeyConstraint& constraint);
    void noteIgnoring(const TableKey& key);
    void addForeignKey(const tsql::ForeignKey& key);
    void checkReference(const std::string& name, const tsql::ForeignKey& key, const Table& parent,
                        const std::vector<std::string>& columns);
    void addCheck(const tsql::CheckConstraint& check);
    void addIndex(const tsql::CreateIndexStatement& index);
    void requireNoVariables(int line) const;
    [[nodiscard]] std::vector<std::string> parentColumns(const tsql::ForeignKey& key,
                                                         const Table& parent) const;
    [[nodiscard]] std::string numbered(const std::string& stem);
    [[nodiscard]] sql::CreateTable creation() const;

    Binder binder_;
    TableDefinition definition_;
    std::vector<sql::Constraint> constraints_;
    std::vector<std::string> takenNames_;
    std::vector<std::string> indexNames_;
    std::vector<std::string> indexes_;  // the texts that make them
    std::vector<Reference> newReferences_;
};

// What COLLATE says of a column; null: the database's order. Errors: 447 for a column that is no
// text, and those of textCollation().
[[nodiscard]] std::shared_ptr<const TextCollation> collationOf(
    const tsql::ColumnDefinition& column);

// The name that an index has in the file: on the server a name belongs to its table.
[[nodiscard]] std::string indexName(const Table& table, const std::string& name);
// That of the one beside it over nulls.
[[nodiscard]] std::string nullsIndexName(const Table& table, const std::string& name);

// A column as the file's definition of its table has it.
[[nodiscard]] sql::ColumnDefinition columnDefinition(const Column& column);

// A unique index over columns.
[[nodiscard]] sql::CreateIndex uniqueIndex(const Table& table, const std::string& name,
                                           const std::vector<std::string>& columns);

// Whether a computed column has the same value as long as its row does not change. Error 2729 for
// one that has not, in a key or an index.
[[nodiscard]] bool isSteady(const Column& column);
[[noreturn]] void notSteady(const Column& column, const Table& table, int line);

// The texts that make an index of a table. Errors of its columns and its filter.
[[nodiscard]] std::vector<std::string> indexTexts(const tsql::CreateIndexStatement& statement,
                                                  const Table& table, int line,
                                                  const NameScope& names);

// A unique index beside one over columns that may be null: SQLite takes any number of nulls, the
// server only one. None when no column may be null.
[[nodiscard]] std::optional<sql::CreateIndex> nullsIndex(const Table& table,
                                                         const std::string& name,
                                                         const std::vector<std::string>& columns);
// The indexes of a key: its own, and that over nulls where it needs one.
[[nodiscard]] std::vector<sql::CreateIndex> keyIndexes(const Table& table, const TableKey& key);

}  // namespace kap::engine
