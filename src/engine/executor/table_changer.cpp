#include "engine/executor/table_changer.hpp"

#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "engine/sqlite/time_limit.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;
using Action = tsql::AlterTableStatement::Action;

namespace {

// A setting of the connection for as long as it lives: none may stay when a change fails half-way.
// Set by its number and not by a PRAGMA, which needs memory.
class SettingScope {
public:
    SettingScope(Database& database, int setting) : database_(database), setting_(setting) {
        sqlite3_db_config(database_.handle(), setting_, 1, nullptr);
    }
    SettingScope(const SettingScope&) = delete;
    SettingScope& operator=(const SettingScope&) = delete;
    ~SettingScope() { sqlite3_db_config(database_.handle(), setting_, 0, nullptr); }

private:
    Database& database_;
    int setting_;
};

}  // namespace

void TableChanger::run(const std::string& sql) {
    PreparedStatement(connection_.handle(), sql).run();
}

bool TableChanger::hasRows(const std::string& sql) {
    PreparedStatement statement(connection_.handle(), sql);
    return statement.step();
}

TableText TableChanger::textOf(const Table& table) {
    PreparedStatement look(connection_.handle(),
                           std::string("SELECT sql FROM ") + (table.temporary ? "temp" : "main") +
                               ".sqlite_schema WHERE type = 'table' AND name = ?1");
    look.bind(1, std::string_view(table.name));
    look.step();
    return TableText(look.text(0));
}

void TableChanger::setText(const Table& table, const TableText& text) {
    const std::string schema = table.temporary ? "temp" : "main";
    const TimeLimit::Pause whole;
    const SettingScope writable(connection_.database(), SQLITE_DBCONFIG_WRITABLE_SCHEMA);
    {
        PreparedStatement update(connection_.handle(),
                                 "UPDATE " + schema +
                                     ".sqlite_schema SET sql = ?2 WHERE type = 'table' AND name = "
                                     "?1");
        const std::string sql = text.sql();
        update.bind(1, std::string_view(table.name));
        update.bind(2, std::string_view(sql));
        update.run();
    }
    std::int64_t version = 0;
    {
        PreparedStatement look(connection_.handle(), "PRAGMA " + schema + ".schema_version");
        look.step();
        version = look.integer(0);
    }
    run("PRAGMA " + schema + ".schema_version = " + plain::text(version + 1));
    // Reads the schema again, from the new text.
    run("PRAGMA writable_schema = RESET");
}

void TableChanger::alter(const tsql::AlterTableStatement& statement, const NameScope& names,
                         int line) {
    const Table* found = findOwnTable(statement.table, names);
    if (found == nullptr) {
        throw ServerError(tsql::Message::TableToAlterNotFound, {statement.table.text()}, line);
    }
    // The catalogue reads the table again while it is being changed.
    const Table table = *found;
    switch (statement.action) {
        case Action::Add:
            add(table, statement, names, line);
            return;
        case Action::AlterColumn:
            alterColumn(table, statement.column, names, line);
            return;
        case Action::DropColumns:
            dropColumns(table, statement, line);
            return;
        case Action::DropConstraints:
            dropConstraints(table, statement, line);
            return;
        case Action::Constraints:
            switchConstraints(table, statement, line);
            return;
        case Action::Triggers:
            switchTriggers(table.name, statement, line);
            return;
    }
}

// --- Changing

void TableChanger::alterColumn(const Table& table, const tsql::ColumnDefinition& definition,
                               const NameScope& names, int line) {
    const Column* before = table.find(definition.name);
    if (before == nullptr) {
        throw ServerError(tsql::Message::ColumnToAlterNotFound,
                          {"ALTER COLUMN", definition.name, table.shown()}, line);
    }
    if (before->computed || before->isRowVersion() ||
        definition.type.type == tsql::SqlType::Timestamp) {
        throw ServerError(tsql::Message::CannotAlterColumn,
                          {definition.name, before->computed ? "COMPUTED" : "timestamp"}, line);
    }
    Column after = *before;
    after.type = definition.type;
    after.collation = collationOf(definition);
    if (after.collation != before->collation) refuseDependents(table, *before, line);
    after.nullable = definition.nullable.value_or(true) && before->keyOrdinal == 0;
    const std::string target = tableSql(table.name, table.temporary);
    const std::string name = sqlName(before->name);
    Binder binder(names);
    const BoundExpression value =
        BoundExpression::expression(sql::column(before->name), before->type, before->nullable);
    const sql::Expression converted = binder.stored(value, after.type, line);
    if (converted != value.tree) {
        run("UPDATE " + target + " SET " + name + " = " + sqlOf(converted));
    }
    if (!after.nullable && hasRows("SELECT 1 FROM " + target + " WHERE " + name + " IS NULL")) {
        throw ServerError(tsql::Message::NullRefused, {before->name, table.shown(), "UPDATE"},
                          line);
    }
    const TableBuilder builder(names, table);
    TableText text = textOf(table);
    after.defaultName = defaultNameOf(text.column(before->name)->text);
    text.column(before->name)->text = builder.columnSql(after);
    setText(table, text);
    run("REINDEX " + target);
}

// What has been ordered by a column keeps it in its order.
void TableChanger::refuseDependents(const Table& table, const Column& column, int line) {
    const std::string dependent = dependentOn(table, column);
    if (dependent.empty()) return;
    followUp_ = ServerError(tsql::Message::ColumnIsAltered, {column.name}, line);
    throw ServerError(tsql::Message::DependentObject, {dependent, column.name}, line);
}

// --- Dropping

void TableChanger::dropColumns(const Table& table, const tsql::AlterTableStatement& statement,
                               int line) {
    for (const std::string& name : statement.names) {
        const Column* column = table.find(name);
        if (column == nullptr && statement.ifExists) continue;
        if (column == nullptr) {
            throw ServerError(tsql::Message::ColumnToAlterNotFound,
                              {"DROP COLUMN", name, table.shown()}, line);
        }
        if (table.columns.size() == 1) {
            throw ServerError(tsql::Message::OnlyDataColumn, {column->name, table.shown()}, line);
        }
        const ServerError failed(tsql::Message::ColumnIsUsed, {column->name}, line);
        if (const std::string dependent = dependentOn(table, *column); !dependent.empty()) {
            followUp_ = failed;
            throw ServerError(tsql::Message::DependentObject, {dependent, column->name}, line);
        }
        try {
            run("ALTER TABLE " + tableSql(table.name, table.temporary) + " DROP COLUMN " +
                sqlName(column->name));
        } catch (const SqliteError& error) {
            if (error.primaryCode() != SQLITE_ERROR) throw;
            throw failed;
        }
        if (column->identity) counters_.renameIdentity(table, "");
    }
}

std::string TableChanger::dependentOn(const Table& table, const Column& column) const {
    const auto names = [&](const std::vector<std::string>& columns) {
        return std::ranges::any_of(
            columns, [&](const std::string& each) { return sameName(each, column.name); });
    };
    for (const ConstraintInfo& each : catalogue_.constraints()) {
        if (!sameName(each.table, table.name)) continue;
        const bool checked = std::string_view(each.type) == "C " &&
                             std::ranges::any_of(tokensOf(each.definition), [&](const auto& token) {
                                 return sameName(token.text, column.name);
                             });
        if (names(each.columns) || checked) return "The object '" + each.name + "'";
    }
    for (const IndexInfo& each : catalogue_.indexes()) {
        if (sameName(each.table, table.name) && each.key.empty() && names(each.columns)) {
            return "The index '" + each.name + "'";
        }
    }
    if (const auto user = schemaBoundUser(catalogue_, table.name, column.name)) {
        return "The object '" + *user + "'";
    }
    // The constraints of temporary tables are not listed.
    if (table.temporary && column.defaultSql && !column.computed) {
        return "The object '" + unnamedDefault(table, column.name) + "'";
    }
    return {};
}

void TableChanger::dropConstraints(const Table& table, const tsql::AlterTableStatement& statement,
                                   int line) {
    for (const std::string& name : statement.names) {
        TableText text = textOf(table);
        if (TableText::Element* element = text.constraint(name)) {
            if (element->isKey()) {
                dropFirstKey(table, text, *element);
                continue;
            }
            text.remove(element);
            setText(table, text);
            continue;
        }
        if (dropLaterKey(table, name)) continue;
        // A default that was not named has the name under which it is listed.
        const auto column = std::ranges::find_if(text.elements(), [&](const auto& element) {
            if (element.constraint) return false;
            const std::string given = defaultNameOf(element.text);
            const Column* own = table.find(element.name);
            const bool unnamed =
                given.empty() && own != nullptr && own->defaultSql && !own->computed;
            return sameName(unnamed ? unnamedDefault(table, element.name) : given, name);
        });
        if (column != text.elements().end()) {
            TableText::Element* changed = text.column(column->name);
            changed->text = withoutDefault(changed->text);
            setText(table, text);
            continue;
        }
        if (statement.ifExists) continue;
        throw ServerError(tsql::Message::NoConstraint, {name}, line);
    }
}

bool TableChanger::dropLaterKey(const Table& table, const std::string& name) {
    for (const StoredObject& object : catalogue_.objects()) {
        const bool key =
            object.kind == StoredKind::PrimaryKey || object.kind == StoredKind::UniqueKey;
        const std::string own = nameAtParent(object);
        if (!key || !sameName(object.parent, table.name) || !sameName(own, name)) continue;
        const StoredObject found = object;
        refuseServing(table, own, tsql::parseNames(found.text));
        const std::string index = indexName(table, own);
        run("DROP INDEX main." + sqlName(index));
        run("DROP INDEX IF EXISTS main." + sqlName(index + " (nulls)"));
        catalogue_.stored().remove(found.kind, found.name);
        return true;
    }
    return false;
}

// A key that foreign keys refer to stays as long as they do.
void TableChanger::refuseServing(const Table& table, const std::string& key,
                                 const std::vector<std::string>& columns) const {
    const auto foreign = catalogue_.servedBy(table, columns);
    if (!foreign) return;
    throw ServerError(tsql::Message::ConstraintIsReferenced,
                      {key, bareName(foreign->table), foreign->name});
}

// A key that was made with its table has an index that SQLite drops with nothing but the table: the
// rows go into a new one.
void TableChanger::dropFirstKey(const Table& table, TableText& text,
                                const TableText::Element& key) {
    if (table.temporary) throw tsql::unsupported("dropping a key of a temporary table", 0);
    for (const ConstraintInfo& each : catalogue_.constraints()) {
        if (sameName(each.table, table.name) && sameName(each.name, key.name)) {
            refuseServing(table, each.name, each.columns);
        }
    }
    const std::string nulls = indexName(table, key.name) + " (nulls)";
    text.remove(&key);
    std::string columns;
    for (const Column& column : table.columns) {
        if (!column.computed) columns += (columns.empty() ? "" : ", ") + sqlName(column.name);
    }
    std::vector<std::string> indexes;
    {
        PreparedStatement look(connection_.handle(),
                               "SELECT sql FROM main.sqlite_schema WHERE type = 'index' AND "
                               "tbl_name = ?1 AND sql IS NOT NULL AND name <> ?2");
        look.bind(1, std::string_view(table.name));
        look.bind(2, std::string_view(nulls));
        while (look.step())
            indexes.push_back(look.text(0));
    }
    const std::string old = "kap old " + table.name;
    const std::string sql = text.sql();
    {
        const TimeLimit::Pause whole;
        const SettingScope legacy(connection_.database(), SQLITE_DBCONFIG_LEGACY_ALTER_TABLE);
        run("ALTER TABLE main." + sqlName(table.name) + " RENAME TO " + sqlName(old));
    }
    run(sql);
    run("INSERT INTO main." + sqlName(table.name) + " (" + columns + ") SELECT " + columns +
        " FROM main." + sqlName(old));
    run("DROP TABLE main." + sqlName(old));
    for (const std::string& index : indexes)
        run(index);
}

// --- Switching on and off

// A constraint that is switched off is kept aside.
void TableChanger::switchConstraints(const Table& table, const tsql::AlterTableStatement& statement,
                                     int line) {
    const auto meant = [&](const std::string& name) {
        return statement.names.empty() ||
               std::ranges::any_of(statement.names,
                                   [&](const std::string& each) { return sameName(each, name); });
    };
    TableText text = textOf(table);
    if (statement.enable) {
        std::vector<TableText::Element> added;
        const std::vector<StoredObject> objects = catalogue_.objects();
        for (const StoredObject& object : objects) {
            if (object.kind != StoredKind::DisabledConstraint ||
                !sameName(object.parent, table.name) || !meant(nameAtParent(object))) {
                continue;
            }
            added.push_back(constraintElement(object.text));
            text.add(added.back());
            catalogue_.stored().remove(object.kind, object.name);
        }
        if (added.empty()) return;
        setText(table, text);
        for (const TableText::Element& element : added) {
            if (statement.withCheck) checkRows(table, element, line);
        }
        return;
    }
    std::vector<TableText::Element> removed;
    for (const TableText::Element& element : text.elements()) {
        if (element.constraint && !element.isKey() && meant(element.name))
            removed.push_back(element);
    }
    if (removed.empty()) {
        if (statement.names.empty()) return;
        throw ServerError(tsql::Message::UnknownConstraint, {statement.names.front()}, line);
    }
    for (const TableText::Element& element : removed) {
        text.remove(text.constraint(element.name));
        catalogue_.stored().put({0, StoredKind::DisabledConstraint,
                                 storedName(schemaOf(table.name), element.name), table.name,
                                 element.text});
    }
    setText(table, text);
}

void TableChanger::switchTriggers(const std::string& parent,
                                  const tsql::AlterTableStatement& statement, int line) {
    std::vector<std::string> names = statement.names;
    const std::vector<StoredObject> objects = catalogue_.objects();
    for (const StoredObject& object : objects) {
        const bool own = object.kind == StoredKind::Trigger && sameName(object.parent, parent);
        if (own && statement.names.empty()) names.push_back(nameAtParent(object));
    }
    for (const std::string& name : names) {
        const auto known = std::ranges::find_if(objects, [&](const StoredObject& object) {
            return object.kind == StoredKind::Trigger && sameName(object.parent, parent) &&
                   sameName(nameAtParent(object), name);
        });
        if (known == objects.end()) {
            throw ServerError(tsql::Message::UnknownTrigger, {name, bareName(parent)}, line);
        }
        catalogue_.stored().setEnabled(StoredKind::Trigger, known->name, statement.enable);
    }
}

}  // namespace kap::engine
