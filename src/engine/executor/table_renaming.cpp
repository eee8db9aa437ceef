#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "tsql/server_error.hpp"

// Other names for tables and what belongs to them.
namespace kap::engine {

using tsql::ServerError;

void TableChanger::renameTable(const Table& table, const std::string& newName) {
    Table renamed = table;
    renamed.name = newName;
    run(sql::AlterTable{tableName(table), sql::RenameTable{newName}});
    renameIndexes(table, renamed);
    counters_.rename(table, newName);
    moveConstraints(table, renamed);
    catalogue_.stored().renameParent(table.name, newName);
}

// An index bears the name of its table before its own.
void TableChanger::renameIndexes(const Table& before, const Table& after) {
    const std::string prefix = indexName(before, "");
    for (const auto& [name, text] : indexTexts(after)) {
        if (name.starts_with(prefix)) {
            remakeIndex(after, name, indexName(after, name.substr(prefix.size())));
        }
    }
}

void TableChanger::remakeIndex(const Table& table, const std::string& stored,
                               const std::string& newStored) {
    for (const auto& [name, text] : indexTexts(table)) {
        if (!sameName(name, stored)) continue;
        auto index = readIndex(text);
        if (!index) return;
        index->name = newStored;
        remakeIndex(table, name, std::move(*index));
    }
}

void TableChanger::remakeIndex(const Table& table, const std::string& stored,
                               sql::CreateIndex index) {
    index.database = databaseOf(table);
    run(sql::Drop{sql::SchemaObject::Index, index.database, stored});
    run(index);
}

bool TableChanger::renameIndex(const Table& table, const std::string& name,
                               const std::string& newName) {
    for (const IndexInfo& index : catalogue_.keysAndIndexes()) {
        if (!sameName(index.table, table.name) || !sameName(index.name, name)) continue;
        if (!index.key.empty()) return renameConstraint(table, index.name, newName);
        const std::string before = indexName(table, index.name);
        const std::string after = indexName(table, newName);
        remakeIndex(table, before, after);
        remakeIndex(table, nullsIndexName(table, index.name), nullsIndexName(table, newName));
        return true;
    }
    return false;
}

namespace {

bool isConstraint(StoredKind kind) {
    return kind == StoredKind::PrimaryKey || kind == StoredKind::UniqueKey ||
           kind == StoredKind::DisabledConstraint;
}

}  // namespace

// A constraint stands in the definition of its table or beside it; the index of a key bears its
// name.
bool TableChanger::renameConstraint(const Table& table, const std::string& name,
                                    const std::string& newName) {
    sql::CreateTable definition = definitionOf(table);
    bool changed = false;
    const auto rename = [&](std::string& own) {
        if (own.empty() || !sameName(own, name)) return;
        own = newName;
        changed = true;
    };
    for (sql::ColumnDefinition& column : definition.columns) {
        if (column.defaultValue) rename(column.defaultValue->name);
    }
    for (sql::Constraint& constraint : definition.constraints)
        rename(constraint.name);
    if (changed) setDefinition(table, std::move(definition));
    for (StoredObject object : std::vector<StoredObject>(catalogue_.objects())) {
        const std::string before = nameAtParent(object);
        if (!isConstraint(object.kind) || !sameName(object.parent, table.name) ||
            !sameName(before, name)) {
            continue;
        }
        if (object.kind == StoredKind::DisabledConstraint) {
            if (auto constraint = readConstraint(object.text)) {
                constraint->name = newName;
                object.text = sqlOf(*constraint);
                catalogue_.stored().put(object);
            }
        }
        catalogue_.stored().rename(object.kind, object.name,
                                   storedName(schemaOf(table.name), newName));
        changed = true;
    }
    if (!changed) return false;
    const std::string before = indexName(table, name);
    const std::string after = indexName(table, newName);
    remakeIndex(table, before, after);
    remakeIndex(table, nullsIndexName(table, name), nullsIndexName(table, newName));
    return true;
}

namespace {

// A foreign key that is switched off calls its parent by the new name; nothing for any other.
std::optional<std::string> withParentRenamed(const StoredObject& object, const std::string& before,
                                             const std::string& after) {
    if (object.kind != StoredKind::DisabledConstraint) return std::nullopt;
    auto constraint = readConstraint(object.text);
    auto* key = constraint ? std::get_if<sql::ForeignKey>(&constraint->kind) : nullptr;
    if (key == nullptr || !sameName(key->parent, before)) return std::nullopt;
    key->parent = after;
    return sqlOf(*constraint);
}

}  // namespace

// Triggers, keys and constraints go to another schema with their table. What refers to it by a
// constraint that is switched off goes on doing so.
void TableChanger::moveConstraints(const Table& before, const Table& after) {
    for (StoredObject object : std::vector<StoredObject>(catalogue_.stored().all())) {
        if (auto text = withParentRenamed(object, before.name, after.name)) {
            object.text = std::move(*text);
            catalogue_.stored().put(object);
        }
        if (!sameName(object.parent, before.name)) continue;
        const std::string name = storedName(schemaOf(after.name), nameAtParent(object));
        if (name != object.name) catalogue_.stored().rename(object.kind, object.name, name);
    }
}

void TableChanger::renameColumn(const Table& table, const std::string& column,
                                const std::string& newName, int line) {
    const Column* found = table.find(column);
    if (found == nullptr) {
        throw ServerError(tsql::Message::AmbiguousRename, {}, line);
    }
    if (table.find(newName) != nullptr && !sameName(newName, found->name)) {
        throw ServerError(tsql::Message::RenameTargetExists, {newName, "COLUMN"}, line);
    }
    run(sql::AlterTable{tableName(table), sql::RenameColumn{found->name, newName}});
    renameInSources(table, found->name, newName);
    renameInNotes(table, found->name, newName);
    if (found->identity) counters_.renameIdentity(table, newName);
}

// SQLite has renamed the column in its own words only.
void TableChanger::renameInSources(const Table& table, const std::string& before,
                                   const std::string& after) {
    sql::CreateTable definition = definitionOf(table);
    bool changed = false;
    const auto rename = [&](sql::Formula& formula) {
        if (!formula.source) return;
        std::string renamed = withColumnRenamed(*formula.source, before, after);
        changed = changed || renamed != *formula.source;
        formula.source = std::move(renamed);
    };
    for (sql::ColumnDefinition& column : definition.columns) {
        if (column.computed) rename(*column.computed);
    }
    for (sql::Constraint& constraint : definition.constraints) {
        auto* check = std::get_if<sql::CheckConstraint>(&constraint.kind);
        if (check != nullptr) rename(check->condition);
    }
    if (changed) setDefinition(table, std::move(definition));
}

// Included columns stand in a comment of their index.
void TableChanger::renameInNotes(const Table& table, const std::string& before,
                                 const std::string& after) {
    for (const auto& [name, text] : indexTexts(table)) {
        auto index = readIndex(text);
        if (!index) continue;
        bool changed = false;
        for (std::string& included : index->notes.included) {
            if (!sameName(included, before)) continue;
            included = after;
            changed = true;
        }
        if (changed) remakeIndex(table, name, std::move(*index));
    }
}

}  // namespace kap::engine
