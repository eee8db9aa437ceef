#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/lru_cache.hpp"
#include "engine/catalog/counters.hpp"
#include "engine/catalog/sequences.hpp"
#include "engine/catalog/stored_objects.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "tsql/parser.hpp"

namespace kap::engine {

// The tables of an open file as the dialect sees them, read from SQLite's schema when they are
// first named and kept until the schema changes.
//
// Tables made by other programs can be used too: their columns get the type that SQLite's affinity
// of the declared type stands for (bigint, float, nvarchar(max) or varbinary(max)).
// A procedure, function or trigger with what its text says.
struct Module {
    StoredObject object;
    tsql::CreateModuleStatement definition;
};

// A constraint or key of a table.
struct ConstraintInfo {
    std::string name;  // without schema, which is its table's
    const char* type;  // as sysobjects says: "PK", "UQ", "F ", "C ", "D "
    std::string table;
    std::vector<std::string> columns;
    std::string definition;  // of a check or default, in SQLite's words
    std::string source;      // the same as it was written
    std::string parent;      // of a foreign key
    std::vector<std::string> parentColumns;
    std::string onDelete;
    std::string onUpdate;
    bool enabled = true;
};

// Its stored name.
[[nodiscard]] std::string storedName(const ConstraintInfo& constraint);

struct IndexInfo {
    std::string name;
    std::string table;
    bool unique = false;
    std::string_view key;  // "PK" or "UQ" when it serves a key
    std::vector<std::string> columns;
    std::vector<bool> descending;  // of each column
    std::string filter;            // of which rows it is, as it was written; empty: of all
    bool ignoresDuplicates = false;
    std::vector<std::string> included = {};
};

// A schema of the database.
struct SchemaInfo {
    std::string name;
    std::int64_t id = 0;
    bool made = false;  // by CREATE SCHEMA: it can be dropped
};

// Whether what a trigger does fires the same trigger again; whether it fires others.
inline constexpr std::string_view kRecursiveTriggers = "recursive triggers";
inline constexpr std::string_view kNestedTriggers = "nested triggers";
// Whether the dialect is that of compatibility level 80.
inline constexpr std::string_view kLevel80 = "compatibility level 80";

class SchemaCatalogue : public Catalogue {
public:
    SchemaCatalogue(Database& database, Counters& counters);

    [[nodiscard]] const Table* find(std::string_view name) const override;
    [[nodiscard]] const View* findView(std::string_view name) const override;
    [[nodiscard]] const Function* findFunction(std::string_view name) const override;
    [[nodiscard]] const Sequence* findSequence(std::string_view name) const override;
    [[nodiscard]] const tsql::ObjectName* findSynonym(std::string_view name) const override;
    [[nodiscard]] std::optional<SystemRows> systemRows(const tsql::ObjectName& name) const override;

    [[nodiscard]] bool knows(std::string_view name) const override;
    [[nodiscard]] std::optional<std::string> schemaNamed(std::string_view name) const override;
    [[nodiscard]] bool isDatabase(std::string_view name) const override;
    // The schemas, those of every database first.
    [[nodiscard]] std::vector<SchemaInfo> schemas() const;
    // The number of a schema; 0 when there is none of that name.
    [[nodiscard]] std::int64_t schemaId(std::string_view name) const;

    // The tables of the file, by name.
    [[nodiscard]] std::vector<const Table*> tables() const;
    // What was stored beside the tables, in the order in which it was made.
    [[nodiscard]] const std::vector<StoredObject>& objects() const;
    // A procedure, function or trigger, read; null when there is none of that name.
    [[nodiscard]] std::shared_ptr<const Module> findModule(StoredKind kind,
                                                           std::string_view name) const;
    // The temporary procedures of the connection, #p, which no file has.
    void addTemporary(std::shared_ptr<const Module> procedure);
    // False when there is none of that name.
    bool removeTemporary(std::string_view procedure);
    // The triggers of a table or view that are switched on, in the order in which they were made.
    [[nodiscard]] std::vector<std::shared_ptr<const Module>> triggersOf(
        std::string_view table) const;
    // Those that an event fires now, in the order in which they do. A trigger is not fired by what
    // it does itself, unless the database says so.
    [[nodiscard]] std::vector<std::shared_ptr<const Module>> firedBy(std::string_view table,
                                                                     std::uint8_t event,
                                                                     bool insteadOf) const;
    [[nodiscard]] bool firesInstead(std::string_view relation, std::uint8_t event) const override;

    // What is firing, the innermost last.
    struct Firing {
        std::string table;
        std::string trigger;  // that is running
    };
    [[nodiscard]] std::vector<Firing>& firing() noexcept { return firing_; }
    [[nodiscard]] const std::vector<Firing>& firing() const noexcept { return firing_; }
    [[nodiscard]] int firingLevel(std::string_view relation) const override;

    // How many rows a table has.
    [[nodiscard]] std::int64_t countRows(const Table& table) const;
    // A setting of the database: kRecursiveTriggers, kNestedTriggers, kLevel80.
    [[nodiscard]] bool isOn(std::string_view setting) const;
    // The type that a name given by CREATE TYPE stands for.
    [[nodiscard]] std::optional<tsql::AliasType> aliasType(const tsql::ObjectName& name) const;
    // How scripts are to be read here.
    [[nodiscard]] tsql::ParseOptions parseOptions(bool quotedNames) const;

    [[nodiscard]] std::vector<std::vector<std::string>> candidateKeys(
        const Table& table) const override;
    [[nodiscard]] std::vector<Reference> references() const override;
    [[nodiscard]] std::optional<std::string> referenceAt(const Table& table) const override;
    [[nodiscard]] std::optional<std::string> checkOf(const Table& table) const override;
    // The foreign key that a key of a table with these columns serves, when no other key would do.
    [[nodiscard]] std::optional<ConstraintInfo> servedBy(
        const Table& table, const std::vector<std::string>& columns) const;

    // The constraints and keys of the file's tables, switched on or off.
    [[nodiscard]] std::vector<ConstraintInfo> constraints() const;
    // A sequence as it stands.
    struct SequenceState {
        Sequence definition;
        std::optional<std::int64_t> last;  // that was given out; absent: it begins at `next`
        std::int64_t first = 0;
    };
    [[nodiscard]] std::vector<SequenceState> sequences() const;

    // The indexes that were made by CREATE INDEX.
    [[nodiscard]] std::vector<IndexInfo> indexes() const;
    // Those and the ones that serve keys, table by table.
    [[nodiscard]] std::vector<IndexInfo> keysAndIndexes() const;

    // Where those things are kept; whoever changes them calls invalidate() then.
    [[nodiscard]] StoredObjects& stored() noexcept { return stored_; }
    // A view whose rows somebody else knows; names in lower case.
    void addView(std::string_view owner, std::string_view name, std::function<SystemRows()> rows) {
        addedViews_.push_back({owner, name, std::move(rows)});
    }
    // What statements are made of has changed, though not the schema.
    void settingsChanged() noexcept { ++generation_; }

    // The name that the database goes by: its file's, or the one that USE has given it. It goes on
    // being known by the ones before.
    [[nodiscard]] const std::string& databaseName() const noexcept { return databaseNames_.back(); }
    void setDatabaseName(std::string name);

    // Compares with the file's schema and forgets everything when it has changed. What find() then
    // answers holds as long as the transaction that this is called in.
    void refresh();
    // Whether what is known is that of a schema of the file, and not of one that is being changed.
    [[nodiscard]] bool isSettled() const noexcept { return knownVersion_ >= 0; }
    // The schema is being changed by this connection.
    void invalidate();
    // The same where a table was made and nothing else: what is known of the others holds. Within
    // the transaction that has made it.
    void added(const Table& table);
    // What this connection has changed of the schema was undone.
    void undone();
    [[nodiscard]] std::uint64_t undoings() const noexcept { return undoings_; }
    // Counts the times that refresh() has found another schema in the file, whoever changed it.
    [[nodiscard]] std::uint64_t fileChanges() const noexcept { return fileChanges_; }
    // Another number each time that everything was forgotten.
    [[nodiscard]] std::uint64_t generation() const noexcept { return generation_; }

private:
    struct Entry {
        std::string name;
        bool temporary = false;
        std::unique_ptr<Table> table;  // read when it is first asked for
    };

    [[nodiscard]] std::int64_t versionInFile();
    void noteFileVersion(std::int64_t version);
    void readNames() const;
    void readNames(const char* sql, bool temporary) const;
    [[nodiscard]] std::unique_ptr<Table> read(const Entry& entry) const;
    void addDefinitions(Table& table) const;
    void addLaterKey(Table& table) const;
    void addIgnoring(Table& table) const;
    [[nodiscard]] std::shared_ptr<const Module> parsed(const StoredObject& object) const;
    // The statement that made an object. Raises SqliteError when its text is that of another.
    template <class Statement>
    [[nodiscard]] Statement definitionOf(const StoredObject& object) const;
    [[nodiscard]] const StoredObject* findObject(StoredKind kind, std::string_view name) const;

    Database& database_;
    Counters& counters_;
    PreparedStatement version_;
    std::int64_t knownVersion_ = -1;
    std::int64_t fileVersion_ = -1;
    std::uint64_t fileChanges_ = 0;
    std::uint64_t undoings_ = 0;
    std::uint64_t generation_ = 0;
    // By the name with its case folded; empty until a table is asked for.
    mutable std::unordered_map<std::string, Entry> tables_;
    mutable bool namesRead_ = false;
    StoredObjects stored_;
    mutable std::optional<std::vector<StoredObject>> objects_;
    mutable std::map<std::string, View> views_;          // by the folded name
    mutable std::map<std::string, Function> functions_;  // by the folded name
    mutable std::map<std::string, Sequence> sequences_;
    mutable std::map<std::string, tsql::ObjectName> synonyms_;
    [[nodiscard]] bool ignoresDuplicates(const Table& table, const ConstraintInfo& key,
                                         const std::vector<IndexInfo>& indexes) const;

    // What ON CONFLICT takes for indexes that ignore duplicates, by their tables' names.
    mutable std::optional<std::multimap<std::string, std::string, std::less<>>> ignoring_;
    // By the name and the text, so that they outlive a change of something else.
    mutable LruCache<std::shared_ptr<const Module>> modules_;
    std::map<std::string, std::shared_ptr<const Module>> temporary_;  // by the folded name
    struct AddedView {
        std::string_view owner;
        std::string_view name;
        std::function<SystemRows()> rows;
    };
    std::vector<AddedView> addedViews_;
    std::vector<Firing> firing_;
    std::vector<std::string> databaseNames_{std::string()};  // the one that counts last
};

}  // namespace kap::engine
