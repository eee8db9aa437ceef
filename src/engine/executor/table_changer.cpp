#include "engine/executor/table_changer.hpp"

#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/definition_writer.hpp"
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

// What is neither a check nor a foreign key keeps its rows' order, and is dropped with a new table.
bool isKey(const sql::Constraint& constraint) {
    return !std::holds_alternative<sql::CheckConstraint>(constraint.kind) &&
           !std::holds_alternative<sql::ForeignKey>(constraint.kind);
}

void removeConstraint(sql::CreateTable& table, const std::string& name) {
    std::erase_if(table.constraints,
                  [&](const sql::Constraint& each) { return sameName(each.name, name); });
}

}  // namespace

void TableChanger::run(const std::string& sql) {
    PreparedStatement(connection_.handle(), sql).run();
}

void TableChanger::run(const sql::SchemaChange& change) {
    run(sqlOf(change));
}

void TableChanger::run(const sql::Write& statement) {
    run(sqlOf(statement));
}

bool TableChanger::hasRows(const Table& table, sql::Expression where) {
    sql::Select rows = sql::one(sql::number(1), sql::from(tableName(table)));
    rows.where = std::move(where);
    PreparedStatement statement(connection_.handle(), sqlOf(sql::Query{std::move(rows)}));
    return statement.step();
}

sql::CreateTable TableChanger::definitionOf(const Table& table) {
    PreparedStatement look(connection_.handle(),
                           std::string("SELECT sql FROM ") + (table.temporary ? "temp" : "main") +
                               ".sqlite_schema WHERE type = 'table' AND name = ?1");
    look.bind(1, std::string_view(table.name));
    look.step();
    auto definition = readTable(look.text(0));
    if (!definition) throw tsql::unsupported("altering a table of another program", 0);
    return std::move(*definition);
}

void TableChanger::setColumn(const Table& table, const Column& column) {
    sql::CreateTable definition = definitionOf(table);
    if (auto* found = findColumn(definition, column.name)) *found = columnDefinition(column);
    setDefinition(table, std::move(definition));
}

std::vector<std::pair<std::string, std::string>> TableChanger::indexTexts(const Table& table) {
    PreparedStatement look(connection_.handle(),
                           std::string("SELECT name, sql FROM ") +
                               (table.temporary ? "temp" : "main") +
                               ".sqlite_schema WHERE type = 'index' AND tbl_name = ?1 COLLATE "
                               "NOCASE AND sql IS NOT NULL");
    look.bind(1, std::string_view(table.name));
    std::vector<std::pair<std::string, std::string>> texts;
    while (look.step())
        texts.emplace_back(look.text(0), look.text(1));
    return texts;
}

void TableChanger::setDefinition(const Table& table, sql::CreateTable definition) {
    // The schema names no database.
    definition.table = {sql::Database::None, table.name};
    const std::string schema = table.temporary ? "temp" : "main";
    const TimeLimit::Pause whole;
    const SettingScope writable(connection_.database(), SQLITE_DBCONFIG_WRITABLE_SCHEMA);
    {
        PreparedStatement update(connection_.handle(),
                                 "UPDATE " + schema +
                                     ".sqlite_schema SET sql = ?2 WHERE type = 'table' AND name = "
                                     "?1");
        const std::string sql = sqlOf(definition);
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
    // Reads the schema again, from the new definition.
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
    Binder binder(names);
    const sql::Expression stored = sql::column(before->name);
    const BoundExpression value =
        BoundExpression::expression(stored, before->type, before->nullable);
    const sql::Expression converted = binder.stored(value, after.type, line);
    if (converted != value.tree) {
        run(sql::Write{sql::Update{tableName(table), {{before->name, converted}}}});
    }
    if (!after.nullable && hasRows(table, sql::isNull(stored))) {
        throw ServerError(tsql::Message::NullRefused, {before->name, table.shown(), "UPDATE"},
                          line);
    }
    sql::CreateTable whole = definitionOf(table);
    if (auto* found = findColumn(whole, before->name)) {
        if (found->defaultValue) after.defaultName = found->defaultValue->name;
        *found = columnDefinition(after);
    }
    setDefinition(table, std::move(whole));
    run(sql::Reindex{tableName(table)});
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
            run(sql::AlterTable{tableName(table), sql::DropColumn{column->name}});
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
        sql::CreateTable definition = definitionOf(table);
        if (const sql::Constraint* constraint = findConstraint(definition, name)) {
            if (isKey(*constraint)) {
                const std::string key = constraint->name;
                dropFirstKey(table, std::move(definition), key);
                continue;
            }
            removeConstraint(definition, name);
            setDefinition(table, std::move(definition));
            continue;
        }
        if (dropLaterKey(table, name)) continue;
        if (dropDefault(table, std::move(definition), name)) continue;
        if (statement.ifExists) continue;
        throw ServerError(tsql::Message::NoConstraint, {name}, line);
    }
}

// A default that was not named has the name under which it is listed.
bool TableChanger::dropDefault(const Table& table, sql::CreateTable definition,
                               const std::string& name) {
    for (sql::ColumnDefinition& column : definition.columns) {
        if (!column.defaultValue) continue;
        const std::string& given = column.defaultValue->name;
        if (!sameName(given.empty() ? unnamedDefault(table, column.name) : given, name)) continue;
        column.defaultValue.reset();
        setDefinition(table, std::move(definition));
        return true;
    }
    return false;
}

bool TableChanger::dropLaterKey(const Table& table, const std::string& name) {
    for (const StoredObject& object : catalogue_.objects()) {
        const bool key =
            object.kind == StoredKind::PrimaryKey || object.kind == StoredKind::UniqueKey;
        const std::string own = nameAtParent(object);
        if (!key || !sameName(object.parent, table.name) || !sameName(own, name)) continue;
        const StoredObject found = object;
        refuseServing(table, own, tsql::parseNames(found.text));
        run(sql::Drop{sql::SchemaObject::Index, sql::Database::Main, indexName(table, own)});
        run(sql::Drop{sql::SchemaObject::Index, sql::Database::Main, nullsIndexName(table, own),
                      true});
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
void TableChanger::dropFirstKey(const Table& table, sql::CreateTable definition,
                                const std::string& key) {
    if (table.temporary) throw tsql::unsupported("dropping a key of a temporary table", 0);
    for (const ConstraintInfo& each : catalogue_.constraints()) {
        if (sameName(each.table, table.name) && sameName(each.name, key)) {
            refuseServing(table, each.name, each.columns);
        }
    }
    removeConstraint(definition, key);
    definition.table = tableName(table);
    std::vector<std::string> columns;
    sql::Select rows;
    for (const Column& column : table.columns) {
        if (column.computed) continue;
        columns.push_back(column.name);
        rows.items.push_back({sql::column(column.name)});
    }
    const auto indexes = indexTexts(table);
    const sql::TableName old{sql::Database::Main, "kap old " + table.name};
    {
        const TimeLimit::Pause whole;
        const SettingScope legacy(connection_.database(), SQLITE_DBCONFIG_LEGACY_ALTER_TABLE);
        run(sql::AlterTable{tableName(table), sql::RenameTable{old.name}});
    }
    run(definition);
    rows.from = sql::from(old);
    run(sql::Write{sql::Insert{tableName(table), std::move(columns), sql::Query{std::move(rows)}}});
    run(sql::Drop{sql::SchemaObject::Table, old.database, old.name});
    for (const auto& [name, text] : indexes) {
        if (name != nullsIndexName(table, key)) run(text);
    }
}

// --- Switching on and off

namespace {

// ALL, or one of the names.
bool isMeant(const tsql::AlterTableStatement& statement, const std::string& name) {
    return statement.names.empty() || std::ranges::any_of(statement.names, [&](const auto& each) {
               return sameName(each, name);
           });
}

}  // namespace

// A constraint that is switched off is kept aside.
void TableChanger::switchConstraints(const Table& table, const tsql::AlterTableStatement& statement,
                                     int line) {
    if (statement.enable) {
        switchOn(table, statement, line);
    } else {
        switchOff(table, statement, line);
    }
}

void TableChanger::switchOn(const Table& table, const tsql::AlterTableStatement& statement,
                            int line) {
    std::vector<sql::Constraint> added;
    const std::vector<StoredObject> objects = catalogue_.objects();
    for (const StoredObject& object : objects) {
        if (object.kind != StoredKind::DisabledConstraint || !sameName(object.parent, table.name) ||
            !isMeant(statement, nameAtParent(object))) {
            continue;
        }
        auto constraint = readConstraint(object.text);
        if (!constraint) continue;
        added.push_back(std::move(*constraint));
        catalogue_.stored().remove(object.kind, object.name);
    }
    addConstraints(table, added);
    if (!statement.withCheck) return;
    for (const sql::Constraint& constraint : added)
        checkRows(table, constraint, line);
}

void TableChanger::switchOff(const Table& table, const tsql::AlterTableStatement& statement,
                             int line) {
    sql::CreateTable definition = definitionOf(table);
    std::vector<sql::Constraint> removed;
    for (const sql::Constraint& each : definition.constraints) {
        if (!each.name.empty() && !isKey(each) && isMeant(statement, each.name))
            removed.push_back(each);
    }
    if (removed.empty()) {
        if (statement.names.empty()) return;
        throw ServerError(tsql::Message::UnknownConstraint, {statement.names.front()}, line);
    }
    for (const sql::Constraint& each : removed) {
        removeConstraint(definition, each.name);
        catalogue_.stored().put({0, StoredKind::DisabledConstraint,
                                 storedName(schemaOf(table.name), each.name), table.name,
                                 sqlOf(each)});
    }
    setDefinition(table, std::move(definition));
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
