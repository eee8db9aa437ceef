#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// The table of the file that holds what SQLite has no place for: views, procedures, functions and
// triggers as they were written, types with names, schemas, keys that were added to a table later,
// and constraints that are switched off. Clients see it only through the views that describe the
// database.
inline constexpr const char* kObjectsTable = "kap_objects";

enum class StoredKind : std::uint8_t {
    View,
    Procedure,
    Function,
    Trigger,
    Type,
    PrimaryKey,
    UniqueKey,
    DisabledConstraint,
    Schema,
    Setting,       // of the database, on or off
    TriggerOrder,  // "trigger/event", which fires first or last among those of its table
    Sequence,
    Synonym,            // its text is the name that it stands for
    NumberedProcedure,  // "p;2", of the group of the procedure p, which is its parent
    Default,            // its text is the value
    Rule,               // its text is the condition, with its one variable
    GlobalTable,        // ##t, which is its parent too; its text is who has made it
};

// Whether objects of the kind share the names of their schema with tables.
[[nodiscard]] constexpr bool hasTableName(StoredKind kind) {
    return kind <= StoredKind::Trigger || kind == StoredKind::Sequence ||
           kind == StoredKind::Synonym || kind == StoredKind::Default || kind == StoredKind::Rule;
}

// What stands for the parent of a type that takes no nulls.
inline constexpr std::string_view kNotNull = "not null";

struct StoredObject {
    std::int64_t id = 0;
    StoredKind kind = StoredKind::View;
    std::string name;    // its stored name (see object_names.hpp)
    std::string parent;  // the table of a trigger, a key or a constraint
    std::string text;
    bool enabled = true;
    bool quotedNames = true;  // what double quotes in the text mean
};

// What a procedure of a group is called that has a number above 1.
[[nodiscard]] std::string numberedName(std::string_view procedure, int number);

// Whether a type is one of tables, whose text is "(a int, ...)".
[[nodiscard]] bool isTableType(const StoredObject& object);

// The name of a constraint, key or trigger without its schema, which is that of its table.
[[nodiscard]] std::string nameAtParent(const StoredObject& object);

class StoredObjects {
public:
    explicit StoredObjects(Database& database) : database_(database) {}

    // In the order in which they were made.
    [[nodiscard]] std::vector<StoredObject> all() const;
    // Within a writing transaction; the object's id is not used. One of the same name and kind
    // keeps its place.
    void put(const StoredObject& object);
    void remove(StoredKind kind, std::string_view name);
    void removeOf(std::string_view parent);
    void rename(StoredKind kind, std::string_view name, std::string_view newName);
    void renameParent(std::string_view parent, std::string_view newName);
    void setEnabled(StoredKind kind, std::string_view name, bool enabled);

private:
    [[nodiscard]] bool exists() const;
    // Other connections notice a change only by SQLite's schema version.
    void changed();

    Database& database_;
};

}  // namespace kap::engine
