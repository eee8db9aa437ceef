#include "engine/catalog/stored_objects.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {

std::string numberedName(std::string_view procedure, int number) {
    return std::string(procedure) + ";" + plain::text(number);
}

bool isTableType(const StoredObject& object) {
    return object.kind == StoredKind::Type && object.text.starts_with('(');
}

// A name with a point that was given before there were schemas has none.
std::string nameAtParent(const StoredObject& object) {
    const bool qualified = sameName(schemaOf(object.name), schemaOf(object.parent));
    return qualified ? std::string(bareName(object.name)) : object.name;
}

bool StoredObjects::exists() const {
    return database_.hasTable("main", "kap_objects");
}

std::vector<StoredObject> StoredObjects::all() const {
    std::vector<StoredObject> result;
    if (!exists()) {
        return result;
    }
    PreparedStatement rows(
        database_.handle(),
        "SELECT id, kind, name, parent, text, enabled, quoted FROM main.kap_objects ORDER BY id");
    while (rows.step()) {
        result.push_back({rows.integer(0), static_cast<StoredKind>(rows.integer(1)), rows.text(2),
                          rows.text(3), rows.text(4), rows.integer(5) != 0, rows.integer(6) != 0});
    }
    return result;
}

void StoredObjects::put(const StoredObject& object) {
    database_.run(
        "CREATE TABLE IF NOT EXISTS main.kap_objects (id INTEGER PRIMARY KEY, kind INTEGER NOT "
        "NULL, name TEXT NOT NULL COLLATE NOCASE, parent TEXT NOT NULL COLLATE NOCASE, text TEXT "
        "NOT NULL, enabled INTEGER NOT NULL, quoted INTEGER NOT NULL, UNIQUE (kind, name))");
    PreparedStatement insert(
        database_.handle(),
        "INSERT INTO main.kap_objects (kind, name, parent, text, enabled, quoted) VALUES (?1, ?2, "
        "?3, ?4, ?5, ?6) ON CONFLICT (kind, name) DO UPDATE SET parent = excluded.parent, text = "
        "excluded.text, enabled = excluded.enabled, quoted = excluded.quoted");
    insert.bind(1, static_cast<std::int64_t>(object.kind));
    insert.bind(2, std::string_view(object.name));
    insert.bind(3, std::string_view(object.parent));
    insert.bind(4, std::string_view(object.text));
    insert.bind(5, std::int64_t{object.enabled ? 1 : 0});
    insert.bind(6, std::int64_t{object.quotedNames ? 1 : 0});
    insert.run();
    changed();
}

void StoredObjects::remove(StoredKind kind, std::string_view name) {
    PreparedStatement forget(database_.handle(),
                             "DELETE FROM main.kap_objects WHERE kind = ?1 AND name = ?2");
    forget.bind(1, static_cast<std::int64_t>(kind));
    forget.bind(2, name);
    forget.run();
    changed();
}

void StoredObjects::removeOf(std::string_view parent) {
    if (!exists()) {
        return;
    }
    PreparedStatement forget(database_.handle(), "DELETE FROM main.kap_objects WHERE parent = ?1");
    forget.bind(1, parent);
    forget.run();
    changed();
}

void StoredObjects::rename(StoredKind kind, std::string_view name, std::string_view newName) {
    PreparedStatement rename(database_.handle(),
                             "UPDATE main.kap_objects SET name = ?3 WHERE kind = ?1 AND name = ?2");
    rename.bind(1, static_cast<std::int64_t>(kind));
    rename.bind(2, name);
    rename.bind(3, newName);
    rename.run();
    changed();
}

void StoredObjects::renameParent(std::string_view parent, std::string_view newName) {
    if (!exists()) {
        return;
    }
    PreparedStatement rename(database_.handle(),
                             "UPDATE main.kap_objects SET parent = ?2 WHERE parent = ?1");
    rename.bind(1, parent);
    rename.bind(2, newName);
    rename.run();
    changed();
}

void StoredObjects::setEnabled(StoredKind kind, std::string_view name, bool enabled) {
    PreparedStatement set(database_.handle(),
                          "UPDATE main.kap_objects SET enabled = ?3 WHERE kind = ?1 AND name = ?2");
    set.bind(1, static_cast<std::int64_t>(kind));
    set.bind(2, name);
    set.bind(3, std::int64_t{enabled ? 1 : 0});
    set.run();
    changed();
}

void StoredObjects::changed() {
    std::int64_t version = 0;
    {
        PreparedStatement look(database_.handle(), "PRAGMA main.schema_version");
        look.step();
        version = look.integer(0);
    }
    database_.run(("PRAGMA main.schema_version = " + plain::text(version + 1)).c_str());
}

}  // namespace kap::engine
