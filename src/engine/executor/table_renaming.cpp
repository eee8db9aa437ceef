#include <string>
#include <utility>
#include <vector>

#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/executor/table_changer.hpp"
#include "engine/plan/statements.hpp"
#include "tsql/server_error.hpp"

// Other names for tables and what belongs to them.
namespace kap::engine {

using tsql::ServerError;

void TableChanger::renameTable(const Table& table, const std::string& newName) {
    Table renamed = table;
    renamed.name = newName;
    run("ALTER TABLE " + tableSql(table.name, table.temporary) + " RENAME TO " + sqlName(newName));
    renameIndexes(table, renamed);
    counters_.rename(table, newName);
    moveConstraints(table, renamed);
    catalogue_.stored().renameParent(table.name, newName);
}

// An index bears the name of its table before its own.
void TableChanger::renameIndexes(const Table& before, const Table& after) {
    const std::string prefix = indexName(before, "");
    std::vector<std::string> indexes;
    {
        PreparedStatement look(connection_.handle(),
                               std::string("SELECT name FROM ") +
                                   (after.temporary ? "temp" : "main") +
                                   ".sqlite_schema WHERE type = 'index' AND tbl_name = ?1 AND sql "
                                   "IS NOT NULL");
        look.bind(1, std::string_view(after.name));
        while (look.step())
            indexes.push_back(look.text(0));
    }
    for (const std::string& name : indexes) {
        if (name.starts_with(prefix)) {
            remakeIndex(after, name, indexName(after, name.substr(prefix.size())));
        }
    }
}

void TableChanger::remakeIndex(const Table& table, const std::string& stored,
                               const std::string& newStored) {
    const std::string place = table.temporary ? "temp" : "main";
    std::string sql;
    {
        PreparedStatement look(connection_.handle(), "SELECT sql FROM " + place +
                                                         ".sqlite_schema WHERE type = 'index' AND "
                                                         "name = ?1 COLLATE NOCASE");
        look.bind(1, std::string_view(stored));
        if (!look.step()) return;
        sql = look.text(0);
    }
    const std::string quoted = sqlName(stored);
    const std::size_t at = sql.find(quoted);
    if (at == std::string::npos) return;
    run("DROP INDEX " + place + "." + quoted);
    run(sql.replace(at, quoted.size(), place + "." + sqlName(newStored)));
}

bool TableChanger::renameIndex(const Table& table, const std::string& name,
                               const std::string& newName) {
    for (const IndexInfo& index : catalogue_.keysAndIndexes()) {
        if (!sameName(index.table, table.name) || !sameName(index.name, name)) continue;
        if (!index.key.empty()) return renameConstraint(table, index.name, newName);
        const std::string before = indexName(table, index.name);
        const std::string after = indexName(table, newName);
        remakeIndex(table, before, after);
        remakeIndex(table, before + " (nulls)", after + " (nulls)");
        return true;
    }
    return false;
}

namespace {

// The text of a constraint, or of a column with a default, under another name.
std::string constraintRenamed(const std::string& text, const std::string& before,
                              const std::string& after) {
    const std::string head = "CONSTRAINT " + sqlName(before);
    const std::size_t at = text.find(head);
    return at == std::string::npos
               ? text
               : std::string(text).replace(at, head.size(), "CONSTRAINT " + sqlName(after));
}

bool isConstraint(StoredKind kind) {
    return kind == StoredKind::PrimaryKey || kind == StoredKind::UniqueKey ||
           kind == StoredKind::DisabledConstraint;
}

}  // namespace

// A constraint stands in the text of its table or beside it; the index of a key bears its name.
bool TableChanger::renameConstraint(const Table& table, const std::string& name,
                                    const std::string& newName) {
    TableText text = textOf(table);
    bool changed = false;
    for (TableText::Element& element : text.elements()) {
        const std::string own = element.constraint ? element.name : defaultNameOf(element.text);
        if (!sameName(own, name)) continue;
        element.text = constraintRenamed(element.text, own, newName);
        changed = true;
    }
    if (changed) setText(table, text);
    for (StoredObject object : std::vector<StoredObject>(catalogue_.objects())) {
        const std::string before = nameAtParent(object);
        if (!isConstraint(object.kind) || !sameName(object.parent, table.name) ||
            !sameName(before, name)) {
            continue;
        }
        if (object.kind == StoredKind::DisabledConstraint) {
            object.text = constraintRenamed(object.text, before, newName);
            catalogue_.stored().put(object);
        }
        catalogue_.stored().rename(object.kind, object.name,
                                   storedName(schemaOf(table.name), newName));
        changed = true;
    }
    if (!changed) return false;
    const std::string before = indexName(table, name);
    const std::string after = indexName(table, newName);
    remakeIndex(table, before, after);
    remakeIndex(table, before + " (nulls)", after + " (nulls)");
    return true;
}

// Triggers, keys and constraints go to another schema with their table. What refers to it by the
// text of a constraint that is switched off goes on doing so.
void TableChanger::moveConstraints(const Table& before, const Table& after) {
    const std::string refers = "REFERENCES " + sqlName(before.name) + " (";
    for (StoredObject object : std::vector<StoredObject>(catalogue_.stored().all())) {
        const std::size_t place = object.kind == StoredKind::DisabledConstraint
                                      ? object.text.find(refers)
                                      : std::string::npos;
        if (place != std::string::npos) {
            object.text.replace(place, refers.size(), "REFERENCES " + sqlName(after.name) + " (");
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
    run("ALTER TABLE " + tableSql(table.name, table.temporary) + " RENAME COLUMN " +
        sqlName(found->name) + " TO " + sqlName(newName));
    renameInSources(table, found->name, newName);
    renameInNotes(table, found->name, newName);
    if (found->identity) counters_.renameIdentity(table, newName);
}

// SQLite has renamed the column in its own words only.
void TableChanger::renameInSources(const Table& table, const std::string& before,
                                   const std::string& after) {
    TableText text = textOf(table);
    bool changed = false;
    for (TableText::Element& element : text.elements()) {
        std::string renamed = withColumnRenamed(element.text, before, after);
        changed = changed || renamed != element.text;
        element.text = std::move(renamed);
    }
    if (changed) setText(table, text);
}

// Included columns stand in a comment of their index.
void TableChanger::renameInNotes(const Table& table, const std::string& before,
                                 const std::string& after) {
    const std::string place = table.temporary ? "temp" : "main";
    std::vector<std::pair<std::string, std::string>> indexes;
    {
        PreparedStatement look(connection_.handle(),
                               "SELECT name, sql FROM " + place +
                                   ".sqlite_schema WHERE type = 'index' AND tbl_name = ?1 COLLATE "
                                   "NOCASE AND sql IS NOT NULL");
        look.bind(1, std::string_view(table.name));
        while (look.step())
            indexes.emplace_back(look.text(0), look.text(1));
    }
    for (const auto& [name, sql] : indexes) {
        const std::string renamed = withIncludedRenamed(sql, before, after);
        if (renamed == sql) continue;
        const std::string quoted = sqlName(name);
        const std::size_t at = renamed.find(quoted);
        if (at == std::string::npos) continue;
        run("DROP INDEX " + place + "." + quoted);
        run(std::string(renamed).insert(at, place + "."));
    }
}

}  // namespace kap::engine
