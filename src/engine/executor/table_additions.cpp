#include <algorithm>

#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/deferred_rules.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "tsql/server_error.hpp"

// ALTER TABLE ... ADD.
namespace kap::engine {

using tsql::ServerError;

namespace {

// "a", "b": the columns of a key that was added later, as they are stored beside it.
std::string quotedNames(const std::vector<std::string>& names) {
    std::string list;
    SqlWriter(list).names(names);
    return list;
}

}  // namespace

// The name of a constraint is given once in its schema.
void TableChanger::checkNames(const Table& table, const tsql::TableElements& added,
                              int line) const {
    std::vector<std::string> names;
    const auto note = [&](const auto& list) {
        for (const auto& each : list)
            names.push_back(each.name);
    };
    note(added.keys);
    note(added.foreignKeys);
    note(added.checks);
    for (const auto& [column, option] : added.defaults)
        names.push_back(option.constraintName);
    for (const ConstraintInfo& known : catalogue_.constraints()) {
        if (!sameName(schemaOf(known.table), schemaOf(table.name))) continue;
        const auto taken = std::ranges::find_if(
            names, [&](const std::string& name) { return sameName(name, known.name); });
        if (taken == names.end()) continue;
        throw ServerError(tsql::Message::ObjectExists, {*taken}, line);
    }
}

void TableChanger::add(const Table& table, const tsql::AlterTableStatement& statement,
                       const NameScope& names, int line) {
    const tsql::TableElements& added = statement.added;
    checkNames(table, added, line);
    TableBuilder builder(names, table);
    for (const sql::Constraint& constraint : definitionOf(table).constraints) {
        if (!constraint.name.empty()) builder.reserveName(constraint.name);
    }
    builder.add(added);
    for (const Column& column : builder.table().columns) {
        if (table.find(column.name) == nullptr) addColumn(table, column, added, builder, line);
    }
    addKeys(table, builder, line);
    addDefaults(table, builder, added, line);
    addConstraints(table, builder.constraints());
    if (statement.withoutCheck) return;
    for (const sql::Constraint& constraint : builder.constraints())
        checkRows(table, constraint, line);
}

namespace {

bool fillsRows(const Column& column, const tsql::TableElements& added) {
    if (!column.nullable) return true;
    return std::ranges::any_of(added.columns, [&](const tsql::ColumnDefinition& each) {
        return sameName(each.name, column.name) && each.defaultValue &&
               each.defaultValue->withValues;
    });
}

}  // namespace

// The column comes in without conditions, gets its values, and then its whole definition.
void TableChanger::addColumn(const Table& table, const Column& column,
                             const tsql::TableElements& added, const TableBuilder& builder,
                             int line) {
    if (column.computed) {
        run(sql::AlterTable{tableName(table), sql::AddColumn{columnDefinition(column)}});
        return;
    }
    Column plain = column;
    plain.nullable = true;
    plain.defaultSql.reset();
    run(sql::AlterTable{tableName(table), sql::AddColumn{columnDefinition(plain)}});
    if (column.identity) {
        TableDefinition definition{builder.table(), {}};
        counters_.add(definition);
    }
    sql::Expression value;
    if (column.identity) {
        value = identityCall(table.name);
    } else if (column.isRowVersion()) {
        value = rowVersionCall();
    } else if (column.defaultSql) {
        // A row that has no value of its own would read the default.
        value = fillsRows(column, added) ? defaultOf(column) : sql::null();
    } else if (!column.nullable && hasRows(table)) {
        throw ServerError(tsql::Message::AddedColumnNeedsDefault, {column.name, table.shown()},
                          line);
    }
    if (value) {
        run(sql::Write{sql::Update{tableName(table), {{column.name, std::move(value)}}}});
    }
    setColumn(table, column);
}

void TableChanger::addKeys(const Table& table, const TableBuilder& builder, int line) {
    for (const TableKey& key : builder.keys()) {
        try {
            for (const sql::CreateIndex& index : keyIndexes(builder.table(), key))
                run(index);
        } catch (const SqliteError& error) {
            if (error.code() != SQLITE_CONSTRAINT_UNIQUE) throw;
            throw duplicateRows(table.name, key.name).at(line);
        }
        if (table.temporary) continue;
        catalogue_.stored().put({0, key.primary ? StoredKind::PrimaryKey : StoredKind::UniqueKey,
                                 storedName(schemaOf(table.name), key.name), table.name,
                                 quotedNames(key.columns)});
    }
}

void TableChanger::addDefaults(const Table& table, const TableBuilder& builder,
                               const tsql::TableElements& added, int line) {
    if (added.defaults.empty()) return;
    sql::CreateTable definition = definitionOf(table);
    for (const auto& [name, option] : added.defaults) {
        const Column* before = table.find(name);
        if (before != nullptr && before->defaultSql) {
            throw ServerError(tsql::Message::ColumnHasDefault, {}, line);
        }
        // Rows from before the column keep their null only when it is written into them. What they
        // hold stays, also where a check was added WITH NOCHECK.
        const DeferredRules asTheyAre(connection_.database());
        run(sql::Write{sql::Update{tableName(table), {{name, sql::column(name)}}}});
        if (auto* found = findColumn(definition, name))
            *found = columnDefinition(*builder.table().find(name));
    }
    setDefinition(table, std::move(definition));
}

void TableChanger::addConstraints(const Table& table, const std::vector<sql::Constraint>& added) {
    if (added.empty()) return;
    sql::CreateTable definition = definitionOf(table);
    definition.constraints.insert(definition.constraints.end(), added.begin(), added.end());
    setDefinition(table, std::move(definition));
}

// The rows that are there must hold to a new constraint.
void TableChanger::checkRows(const Table& table, const sql::Constraint& constraint, int line) {
    const auto* check = std::get_if<sql::CheckConstraint>(&constraint.kind);
    bool violated = false;
    if (check != nullptr) {
        violated = hasRows(table, sql::negation(check->condition.value));
    } else {
        PreparedStatement look(connection_.handle(),
                               "PRAGMA foreign_key_check(" + sqlName(table.name) + ")");
        violated = look.step();
    }
    if (!violated) return;
    throw ServerError(tsql::Message::ConstraintConflict,
                      {"ALTER TABLE", check == nullptr ? "FOREIGN KEY" : "CHECK", constraint.name,
                       catalogue_.databaseName(), withSchema(table.name), ""},
                      line);
}

}  // namespace kap::engine
