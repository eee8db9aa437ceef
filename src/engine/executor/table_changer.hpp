#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/binder/name_scope.hpp"
#include "engine/catalog/counters.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/sqlite/definition_tree.hpp"
#include "engine/sqlite/file_connection.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// ALTER TABLE. SQLite can add and drop plain columns; everything else is a change of the values and
// of the text by which the file knows the table, which SQLite allows as long as rows written by the
// old text are right by the new one.
//
// Works within a writing transaction; the caller invalidates the catalogue. Raises ServerError and
// SqliteError.
class TableChanger {
public:
    TableChanger(FileConnection& connection, SchemaCatalogue& catalogue, Counters& counters)
        : connection_(connection), catalogue_(catalogue), counters_(counters) {}

    void alter(const tsql::AlterTableStatement& statement, const NameScope& names, int line);
    // Stored names, of which the new one is not taken: with its indexes, counters and triggers.
    void renameTable(const Table& table, const std::string& newName);
    // Errors 15248 and 15335.
    void renameColumn(const Table& table, const std::string& column, const std::string& newName,
                      int line);

    // Constraints and indexes get other names that are not taken. False when the table has none of
    // that name.
    [[nodiscard]] bool renameConstraint(const Table& table, const std::string& name,
                                        const std::string& newName);
    [[nodiscard]] bool renameIndex(const Table& table, const std::string& name,
                                   const std::string& newName);
    // ENABLE and DISABLE TRIGGER of a table or view.
    void switchTriggers(const std::string& parent, const tsql::AlterTableStatement& statement,
                        int line);

    // What is to be said behind the error that was raised.
    [[nodiscard]] const std::optional<tsql::ServerError>& followUp() const { return followUp_; }

private:
    void run(const std::string& sql);
    void run(const sql::SchemaChange& change);
    void run(const sql::Write& statement);
    // Whether a table has a row of which this is true; none: any row.
    [[nodiscard]] bool hasRows(const Table& table, sql::Expression where = {});
    // How the file defines a table. Unsupported where another program has written it in words
    // that the dialect cannot read.
    [[nodiscard]] sql::CreateTable definitionOf(const Table& table);
    // Puts another definition in its place.
    void setDefinition(const Table& table, sql::CreateTable definition);
    void setColumn(const Table& table, const Column& column);
    // The texts of a table's indexes by their stored names.
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> indexTexts(const Table& table);
    void renameIndexes(const Table& before, const Table& after);
    // Gives a stored index another stored name.
    void remakeIndex(const Table& table, const std::string& stored, const std::string& newStored);
    void remakeIndex(const Table& table, const std::string& stored, sql::CreateIndex index);
    void moveConstraints(const Table& before, const Table& after);
    void renameInSources(const Table& table, const std::string& before, const std::string& after);
    void renameInNotes(const Table& table, const std::string& before, const std::string& after);

    void add(const Table& table, const tsql::AlterTableStatement& statement, const NameScope& names,
             int line);
    void checkNames(const Table& table, const tsql::TableElements& added, int line) const;
    void addColumn(const Table& table, const Column& column, const tsql::TableElements& added,
                   const TableBuilder& builder, int line);
    void addKeys(const Table& table, const TableBuilder& builder, int line);
    void addConstraints(const Table& table, const std::vector<sql::Constraint>& added);
    void addDefaults(const Table& table, const TableBuilder& builder,
                     const tsql::TableElements& added, int line);
    void checkRows(const Table& table, const sql::Constraint& constraint, int line);
    void alterColumn(const Table& table, const tsql::ColumnDefinition& definition,
                     const NameScope& names, int line);
    void refuseDependents(const Table& table, const Column& column, int line);
    void dropColumns(const Table& table, const tsql::AlterTableStatement& statement, int line);
    // What keeps a column from being dropped, as the server names it: "The object 'df_b'".
    [[nodiscard]] std::string dependentOn(const Table& table, const Column& column) const;
    void dropConstraints(const Table& table, const tsql::AlterTableStatement& statement, int line);
    [[nodiscard]] bool dropLaterKey(const Table& table, const std::string& name);
    void refuseServing(const Table& table, const std::string& key,
                       const std::vector<std::string>& columns) const;
    void dropFirstKey(const Table& table, sql::CreateTable definition, const std::string& key);
    [[nodiscard]] bool dropDefault(const Table& table, sql::CreateTable definition,
                                   const std::string& name);
    void switchConstraints(const Table& table, const tsql::AlterTableStatement& statement,
                           int line);
    void switchOn(const Table& table, const tsql::AlterTableStatement& statement, int line);
    void switchOff(const Table& table, const tsql::AlterTableStatement& statement, int line);

    FileConnection& connection_;
    SchemaCatalogue& catalogue_;
    Counters& counters_;
    std::optional<tsql::ServerError> followUp_;
};

}  // namespace kap::engine
