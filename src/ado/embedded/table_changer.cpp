#include "ado/embedded/table_changer.hpp"

#include <algorithm>

#include "ado/embedded/translate/statements.hpp"
#include "ado/embedded/violations.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::ServerError;
using Action = tsql::AlterTableStatement::Action;

namespace {

bool isForeignKey(const TableText::Element& element) {
    return element.text.find("FOREIGN KEY") != std::string::npos;
}

bool isCheck(const TableText::Element& element) {
    const std::size_t word = element.text.find(" CHECK (");
    return element.constraint && word != std::string::npos;
}

bool isKey(const TableText::Element& element) {
    return element.constraint && !isForeignKey(element) && !isCheck(element);
}

std::string nameList(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + sqlName(name);
    return list;
}

TableText::Element constraintElement(const std::string& text) {
    const TableText whole("CREATE TABLE t (" + text + ")");
    return whole.elements().front();
}

}  // namespace

const Table& TableChanger::requireTable(const std::string& name, int line) const {
    const Table* table = catalogue_.find(name);
    if (table != nullptr) return *table;
    throw ServerError(4902,
                      "Cannot find the object \"" + name +
                          "\" because it does not exist or you do not have permissions.",
                      line);
}

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
    run("PRAGMA writable_schema = ON");
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
    run("PRAGMA " + schema + ".schema_version = " + tsql::integerText(version + 1));
    // Reads the schema again, from the new text.
    run("PRAGMA writable_schema = RESET");
}

void TableChanger::alter(const tsql::AlterTableStatement& statement, const Names& names, int line) {
    const Table* found = findTable(statement.table, names);
    // The catalogue reads the table again while it is being changed.
    const Table table = found != nullptr ? *found : requireTable(statement.table.text(), line);
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
            switchTriggers(table, statement, line);
            return;
    }
}

// --- Adding

// The name of a constraint is given once in the file.
void TableChanger::checkNames(const tsql::TableElements& added, int line) const {
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
        const auto taken = std::ranges::find_if(
            names, [&](const std::string& name) { return sameName(name, known.name); });
        if (taken == names.end()) continue;
        throw ServerError(2714,
                          "There is already an object named '" + *taken + "' in the database.",
                          line, 16, 5);
    }
}

void TableChanger::add(const Table& table, const tsql::AlterTableStatement& statement,
                       const Names& names, int line) {
    const tsql::TableElements& added = statement.added;
    checkNames(added, line);
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
    std::string value;
    if (column.identity) {
        value = identityCall(table.name);
    } else if (column.isRowVersion()) {
        value = rowVersionCall();
    } else if (column.defaultSql && fillsRows(column, added)) {
        value = *column.defaultSql;
    } else if (!column.nullable && hasRows("SELECT 1 FROM " + target)) {
        throw ServerError(4901,
                          "ALTER TABLE only allows columns to be added that can contain nulls, or "
                          "have a DEFAULT definition specified, or the column being added is an "
                          "identity or timestamp column, or alternatively if none of the previous "
                          "conditions are satisfied the table must be empty to allow addition of "
                          "this column. Column '" +
                              column.name + "' cannot be added to non-empty table '" + table.name +
                              "' because it does not satisfy these conditions.",
                          line);
    }
    if (!value.empty()) run("UPDATE " + target + " SET " + sqlName(column.name) + " = " + value);
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
                nameList(key.columns) + ")");
            if (!nulls.empty()) run(nulls);
        } catch (const SqliteError& error) {
            if (error.code() != SQLITE_CONSTRAINT_UNIQUE) throw;
            throw duplicateRows(table.name, key.name).at(line);
        }
        if (table.temporary) continue;
        catalogue_.stored().put({0, key.primary ? StoredKind::PrimaryKey : StoredKind::UniqueKey,
                                 key.name, table.name, nameList(key.columns)});
    }
}

void TableChanger::addDefaults(const Table& table, const TableBuilder& builder,
                               const tsql::TableElements& added, int line) {
    if (added.defaults.empty()) return;
    TableText text = textOf(table);
    for (const auto& [name, option] : added.defaults) {
        const Column* before = table.find(name);
        if (before != nullptr && before->defaultSql) {
            throw ServerError(1781, "Column already has a DEFAULT bound to it.", line);
        }
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
    if (isForeignKey(constraint)) {
        violated = hasRows("PRAGMA foreign_key_check(" + sqlName(table.name) + ")");
    } else {
        const std::size_t condition = constraint.text.find(" CHECK (") + 7;
        violated = hasRows("SELECT 1 FROM " + tableSql(table.name, table.temporary) +
                           " WHERE NOT " + constraint.text.substr(condition));
    }
    if (!violated) return;
    throw ServerError(547,
                      std::string("The ALTER TABLE statement conflicted with the ") +
                          (isForeignKey(constraint) ? "FOREIGN KEY" : "CHECK") + " constraint \"" +
                          constraint.name + "\". The conflict occurred in database \"" +
                          catalogue_.databaseName() + "\", table \"dbo." + table.name + "\".",
                      line, 16, 0);
}

// --- Changing

void TableChanger::alterColumn(const Table& table, const tsql::ColumnDefinition& definition,
                               const Names& names, int line) {
    const Column* before = table.find(definition.name);
    if (before == nullptr) {
        throw ServerError(4924,
                          "ALTER TABLE ALTER COLUMN failed because column '" + definition.name +
                              "' does not exist in table '" + table.name + "'.",
                          line);
    }
    if (before->computed || before->isRowVersion() ||
        definition.type.type == tsql::SqlType::Timestamp) {
        throw ServerError(4928,
                          "Cannot alter column '" + definition.name + "' because it is '" +
                              (before->computed ? "COMPUTED" : "timestamp") + "'.",
                          line);
    }
    Column after = *before;
    after.type = definition.type;
    after.nullable = definition.nullable.value_or(true) && before->keyOrdinal == 0;
    const std::string target = tableSql(table.name, table.temporary);
    const std::string name = sqlName(before->name);
    Binder binder(names);
    const Typed value = Typed::expression(name, before->type, before->nullable);
    const std::string converted = binder.stored(value, after.type, line);
    if (converted != name) run("UPDATE " + target + " SET " + name + " = " + converted);
    if (!after.nullable && hasRows("SELECT 1 FROM " + target + " WHERE " + name + " IS NULL")) {
        throw ServerError(515,
                          "Cannot insert the value NULL into column '" + before->name +
                              "', table '" + table.name +
                              "'; column does not allow nulls. UPDATE fails.",
                          line, 16, 2);
    }
    const TableBuilder builder(names, table);
    TableText text = textOf(table);
    after.defaultName = defaultNameOf(text.column(before->name)->text);
    text.column(before->name)->text = builder.columnSql(after);
    setText(table, text);
    run("REINDEX " + target);
}

void TableChanger::renameTable(const std::string& name, const std::string& newName, int line) {
    const Table table = requireTable(name, line);
    if (catalogue_.find(newName) != nullptr) {
        throw ServerError(15335,
                          "Error: The new name '" + newName +
                              "' is already in use as a OBJECT name and would cause a duplicate "
                              "that is not permitted.",
                          line, 11);
    }
    run("ALTER TABLE " + tableSql(table.name, table.temporary) + " RENAME TO " + sqlName(newName));
    counters_.rename(table, newName);
    catalogue_.stored().rename(table.name, newName);
}

void TableChanger::renameColumn(const std::string& name, const std::string& column,
                                const std::string& newName, int line) {
    const Table table = requireTable(name, line);
    const Column* found = table.find(column);
    if (found == nullptr) {
        throw ServerError(15248,
                          "Either the parameter @objname is ambiguous or the claimed @objtype "
                          "(COLUMN) is wrong.",
                          line, 11);
    }
    run("ALTER TABLE " + tableSql(table.name, table.temporary) + " RENAME COLUMN " +
        sqlName(found->name) + " TO " + sqlName(newName));
    if (found->identity) counters_.renameIdentity(table, newName);
}

// --- Dropping

void TableChanger::dropColumns(const Table& table, const tsql::AlterTableStatement& statement,
                               int line) {
    for (const std::string& name : statement.names) {
        const Column* column = table.find(name);
        if (column == nullptr && statement.ifExists) continue;
        if (column == nullptr) {
            throw ServerError(4924,
                              "ALTER TABLE DROP COLUMN failed because column '" + name +
                                  "' does not exist in table '" + table.name + "'.",
                              line);
        }
        const auto dependent = [&] {
            return ServerError(4922,
                               "ALTER TABLE DROP COLUMN " + column->name +
                                   " failed because one or more objects access this column.",
                               line, 16, 9);
        };
        if (column->defaultSql && !column->computed) throw dependent();
        try {
            run("ALTER TABLE " + tableSql(table.name, table.temporary) + " DROP COLUMN " +
                sqlName(column->name));
        } catch (const SqliteError& error) {
            if (error.primaryCode() != SQLITE_ERROR) throw;
            throw dependent();
        }
        if (column->identity) counters_.renameIdentity(table, "");
    }
}

void TableChanger::dropConstraints(const Table& table, const tsql::AlterTableStatement& statement,
                                   int line) {
    for (const std::string& name : statement.names) {
        TableText text = textOf(table);
        if (TableText::Element* element = text.constraint(name)) {
            if (isKey(*element)) {
                dropFirstKey(table, text, *element);
                continue;
            }
            text.remove(element);
            setText(table, text);
            continue;
        }
        if (dropLaterKey(table, name)) continue;
        const auto column = std::ranges::find_if(text.elements(), [&](const auto& element) {
            return !element.constraint && sameName(defaultNameOf(element.text), name);
        });
        if (column != text.elements().end()) {
            TableText::Element* changed = text.column(column->name);
            changed->text = withoutDefault(changed->text);
            setText(table, text);
            continue;
        }
        if (statement.ifExists) continue;
        throw ServerError(3728, "'" + name + "' is not a constraint.", line);
    }
}

bool TableChanger::dropLaterKey(const Table& table, const std::string& name) {
    for (const StoredObject& object : catalogue_.objects()) {
        const bool key =
            object.kind == StoredKind::PrimaryKey || object.kind == StoredKind::UniqueKey;
        if (!key || !sameName(object.parent, table.name) || !sameName(object.name, name)) continue;
        const StoredObject found = object;
        const std::string index = indexName(table, found.name);
        run("DROP INDEX main." + sqlName(index));
        run("DROP INDEX IF EXISTS main." + sqlName(index + " (nulls)"));
        catalogue_.stored().remove(found.kind, found.name);
        return true;
    }
    return false;
}

// A key that was made with its table has an index that SQLite drops with nothing but the table: the
// rows go into a new one.
void TableChanger::dropFirstKey(const Table& table, TableText& text,
                                const TableText::Element& key) {
    if (table.temporary) throw tsql::unsupported("dropping a key of a temporary table", 0);
    if (hasRows("SELECT 1 FROM main.sqlite_schema AS m, pragma_foreign_key_list(m.name, 'main') AS "
                "f WHERE m.type = 'table' AND f.\"table\" = " +
                sqlText(table.name) + " COLLATE NOCASE")) {
        throw ServerError(3725, "The constraint '" + key.name +
                                    "' is being referenced by table constraints: a foreign key "
                                    "refers to table '" +
                                    table.name + "'.");
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
    run("PRAGMA legacy_alter_table = ON");
    run("ALTER TABLE main." + sqlName(table.name) + " RENAME TO " + sqlName(old));
    run("PRAGMA legacy_alter_table = OFF");
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
                !sameName(object.parent, table.name) || !meant(object.name)) {
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
        if (element.constraint && !isKey(element) && meant(element.name))
            removed.push_back(element);
    }
    if (removed.empty()) {
        if (statement.names.empty()) return;
        throw ServerError(4917, "Constraint '" + statement.names.front() + "' does not exist.",
                          line);
    }
    for (const TableText::Element& element : removed) {
        text.remove(text.constraint(element.name));
        catalogue_.stored().put(
            {0, StoredKind::DisabledConstraint, element.name, table.name, element.text});
    }
    setText(table, text);
}

void TableChanger::switchTriggers(const Table& table, const tsql::AlterTableStatement& statement,
                                  int line) {
    std::vector<std::string> names = statement.names;
    const std::vector<StoredObject> objects = catalogue_.objects();
    for (const StoredObject& object : objects) {
        const bool own = object.kind == StoredKind::Trigger && sameName(object.parent, table.name);
        if (own && statement.names.empty()) names.push_back(object.name);
    }
    for (const std::string& name : names) {
        const bool known = std::ranges::any_of(objects, [&](const StoredObject& object) {
            return object.kind == StoredKind::Trigger && sameName(object.parent, table.name) &&
                   sameName(object.name, name);
        });
        if (!known) {
            throw ServerError(4920,
                              "ALTER TABLE failed because trigger '" + name + "' on table '" +
                                  table.name + "' does not exist.",
                              line);
        }
        catalogue_.stored().setEnabled(StoredKind::Trigger, name, statement.enable);
    }
}

}  // namespace kap::ado::embedded
