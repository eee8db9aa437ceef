#include <algorithm>

#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/deferred_rules.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

// ALTER TABLE ... ADD.
namespace kap::engine {

using tsql::ServerError;

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
    const TableText before = textOf(table);
    for (const TableText::Element& element : before.elements()) {
        if (element.constraint) builder.reserveName(element.name);
    }
    builder.add(added);
    for (const Column& column : builder.table().columns) {
        if (table.find(column.name) == nullptr) addColumn(table, column, added, builder, line);
    }
    addKeys(table, builder, line);
    addDefaults(table, builder, added, line);
    for (const TableText::Element& element : addConstraints(table, builder)) {
        if (!statement.withoutCheck) checkRows(table, element, line);
    }
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

// The column comes in without conditions, gets its values, and then its whole text.
void TableChanger::addColumn(const Table& table, const Column& column,
                             const tsql::TableElements& added, const TableBuilder& builder,
                             int line) {
    const std::string target = tableSql(table.name, table.temporary);
    const std::string full = builder.columnSql(column);
    if (column.computed) {
        run("ALTER TABLE " + target + " ADD COLUMN " + full);
        return;
    }
    Column plain = column;
    plain.nullable = true;
    plain.defaultSql.reset();
    run("ALTER TABLE " + target + " ADD COLUMN " + builder.columnSql(plain));
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
    } else if (!column.nullable && hasRows("SELECT 1 FROM " + target)) {
        throw ServerError(tsql::Message::AddedColumnNeedsDefault, {column.name, table.shown()},
                          line);
    }
    if (value) {
        run("UPDATE " + target + " SET " + sqlName(column.name) + " = " + sqlOf(value));
    }
    TableText text = textOf(table);
    text.column(column.name)->text = full;
    setText(table, text);
}

void TableChanger::addKeys(const Table& table, const TableBuilder& builder, int line) {
    for (const TableKey& key : builder.keys()) {
        const std::string nulls =
            key.primary ? "" : nullsIndex(builder.table(), key.name, key.columns);
        try {
            run("CREATE UNIQUE INDEX " + std::string(table.temporary ? "temp." : "main.") +
                sqlName(indexName(table, key.name)) + " ON " + sqlName(table.name) + " (" +
                nameList(key.columns) + ")" + commentOf({key.ignoresDuplicates, {}}));
            if (!nulls.empty()) run(nulls + commentOf({key.ignoresDuplicates, {}}));
        } catch (const SqliteError& error) {
            if (error.code() != SQLITE_CONSTRAINT_UNIQUE) throw;
            throw duplicateRows(table.name, key.name).at(line);
        }
        if (table.temporary) continue;
        catalogue_.stored().put({0, key.primary ? StoredKind::PrimaryKey : StoredKind::UniqueKey,
                                 storedName(schemaOf(table.name), key.name), table.name,
                                 nameList(key.columns)});
    }
}

void TableChanger::addDefaults(const Table& table, const TableBuilder& builder,
                               const tsql::TableElements& added, int line) {
    if (added.defaults.empty()) return;
    TableText text = textOf(table);
    for (const auto& [name, option] : added.defaults) {
        const Column* before = table.find(name);
        if (before != nullptr && before->defaultSql) {
            throw ServerError(tsql::Message::ColumnHasDefault, {}, line);
        }
        // Rows from before the column keep their null only when it is written into them. What they
        // hold stays, also where a check was added WITH NOCHECK.
        const DeferredRules asTheyAre(connection_.database());
        const std::string own = sqlName(name);
        run("UPDATE " + tableSql(table.name, table.temporary) + " SET " + own + " = " + own);
        text.column(name)->text = builder.columnSql(*builder.table().find(name));
    }
    setText(table, text);
}

std::vector<TableText::Element> TableChanger::addConstraints(const Table& table,
                                                             const TableBuilder& builder) {
    std::vector<TableText::Element> added;
    if (builder.constraints().empty()) return added;
    TableText text = textOf(table);
    for (const std::string& constraint : builder.constraints()) {
        added.push_back(constraintElement(constraint));
        text.add(added.back());
    }
    setText(table, text);
    return added;
}

// The rows that are there must hold to a new constraint.
void TableChanger::checkRows(const Table& table, const TableText::Element& constraint, int line) {
    bool violated = false;
    if (constraint.isForeignKey()) {
        violated = hasRows("PRAGMA foreign_key_check(" + sqlName(table.name) + ")");
    } else {
        const std::size_t condition = constraint.text.find(" CHECK (") + 7;
        violated = hasRows("SELECT 1 FROM " + tableSql(table.name, table.temporary) +
                           " WHERE NOT " + constraint.text.substr(condition));
    }
    if (!violated) return;
    throw ServerError(tsql::Message::ConstraintConflict,
                      {"ALTER TABLE", constraint.isForeignKey() ? "FOREIGN KEY" : "CHECK",
                       constraint.name, catalogue_.databaseName(), withSchema(table.name), ""},
                      line);
}

}  // namespace kap::engine
