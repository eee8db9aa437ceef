#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/values/text_collation.hpp"
#include "engine/values/value.hpp"
#include "tsql/statements.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// The start and the step of an identity column.
struct Identity {
    std::int64_t seed = 1;
    std::int64_t increment = 1;

    friend bool operator==(const Identity&, const Identity&) = default;
};

// A column of a stored table.
struct Column {
    std::string name;
    tsql::TypeSpec type;
    bool nullable = true;
    std::optional<Identity> identity;
    // The place in the primary key from 1; 0 when not part of it.
    int keyOrdinal = 0;
    // The default as a SQLite expression in storage form, as the schema holds it.
    std::optional<std::string> defaultSql;
    // What that was written as; empty in a file of before.
    std::string source;
    std::string defaultName;  // of its constraint; empty when it was not named
    // Of a text, where it is not the database's.
    std::shared_ptr<const TextCollation> collation = nullptr;
    // Computed from other columns of the row (`defaultSql` says how): it cannot be written.
    bool computed = false;

    [[nodiscard]] bool isRowVersion() const { return type.type == tsql::SqlType::Timestamp; }
};

// The order that its definition in the file names: KAP_CI; empty where SQLite has its own.
[[nodiscard]] std::string_view collationOf(const Column& column);

struct Sequence;

// A stored table.
struct Table {
    std::string name;        // its stored name
    bool temporary = false;  // lives in SQLite's "temp" schema; its name starts with #
    std::vector<Column> columns;
    // What ON CONFLICT takes for the indexes that ignore duplicates.
    std::vector<std::string> ignoring;
    // The events (TriggerEvents) for which the table has triggers that fire after them, and those
    // for which it has one that fires instead.
    std::uint8_t triggerEvents = 0;
    std::uint8_t insteadOfEvents = 0;
    // How often triggers of the table are running: what is written meanwhile is caught beside what
    // they were fired by.
    int captureLevel = 0;

    // The column of that name (case ignored), or null.
    [[nodiscard]] const Column* find(std::string_view column) const;
    // The name without its schema, as most messages show it.
    [[nodiscard]] std::string_view shown() const;
};

// A stored query that is read like a table.
struct View {
    std::string name;
    std::vector<std::string> columns;  // empty: as the query names them
    std::shared_ptr<const tsql::Query> query;
    bool checksRows = false;  // WITH CHECK OPTION: what is written through it must show in it
    std::uint8_t insteadOfEvents = 0;
};

// A stored function.
struct Function {
    struct Parameter {
        std::string name;
        tsql::TypeSpec type;
        // What DEFAULT stands for; null without a default.
        std::shared_ptr<const tsql::Expression> defaultValue;
    };
    std::string name;
    std::vector<Parameter> parameters;
    tsql::TypeSpec returns;                   // of a scalar one
    std::shared_ptr<const tsql::Query> rows;  // of one that stands as its query
    std::vector<Column> columns;              // of one that fills a table: its columns

    [[nodiscard]] bool returnsTable() const { return rows != nullptr || !columns.empty(); }
};

// A foreign key, as far as it changes rows by itself.
struct Reference {
    std::string table;
    std::string parent;
    tsql::ReferenceAction onDelete = tsql::ReferenceAction::None;
    tsql::ReferenceAction onUpdate = tsql::ReferenceAction::None;
};

// The rows of a view that describes the database itself.
struct SystemRows {
    struct ColumnType {
        std::string name;
        tsql::TypeSpec type;
    };
    std::vector<ColumnType> columns;
    std::vector<std::vector<Value>> rows;
    bool ofTheMoment = false;  // they change though the schema does not
};

// The tables that a statement can name. The translator asks; whoever keeps the schema answers.
class Catalogue {
public:
    Catalogue() = default;
    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;
    virtual ~Catalogue() = default;

    // The table of that stored name (case ignored; see object_names.hpp), or null. The answer stays
    // valid until the schema changes.
    [[nodiscard]] virtual const Table* find(std::string_view name) const = 0;
    // The same for views and functions.
    [[nodiscard]] virtual const View* findView(std::string_view /*name*/) const { return nullptr; }
    [[nodiscard]] virtual const Function* findFunction(std::string_view /*name*/) const {
        return nullptr;
    }
    // The sequence of that stored name, or null.
    [[nodiscard]] virtual const Sequence* findSequence(std::string_view /*name*/) const {
        return nullptr;
    }
    // The name that a synonym of that stored name stands for, or null.
    [[nodiscard]] virtual const tsql::ObjectName* findSynonym(std::string_view /*name*/) const {
        return nullptr;
    }
    // Whether there is an object of that stored name that names can mean.
    [[nodiscard]] virtual bool knows(std::string_view name) const {
        return find(name) != nullptr || findView(name) != nullptr;
    }
    // A schema in its own spelling; nothing when there is none of that name.
    [[nodiscard]] virtual std::optional<std::string> schemaNamed(std::string_view name) const;
    [[nodiscard]] bool hasSchema(std::string_view name) const {
        return schemaNamed(name).has_value();
    }
    // Whether this database goes by that name.
    [[nodiscard]] virtual bool isDatabase(std::string_view /*name*/) const { return true; }
    // The columns of each key of a table that foreign keys can refer to.
    [[nodiscard]] virtual std::vector<std::vector<std::string>> candidateKeys(
        const Table& table) const;
    // The foreign keys of the file's tables.
    [[nodiscard]] virtual std::vector<Reference> references() const { return {}; }
    // The name of a foreign key from or to a table of the file.
    [[nodiscard]] virtual std::optional<std::string> referenceAt(const Table& /*table*/) const {
        return std::nullopt;
    }
    // Whether a trigger of a table or view fires instead of an event: one that is running is not
    // fired by what it does itself.
    [[nodiscard]] virtual bool firesInstead(std::string_view /*relation*/,
                                            std::uint8_t /*event*/) const {
        return false;
    }
    // How often triggers of a table or view are running.
    [[nodiscard]] virtual int firingLevel(std::string_view /*relation*/) const { return 0; }
    // The name of a check of a table of the file that is switched on.
    [[nodiscard]] virtual std::optional<std::string> checkOf(const Table& /*table*/) const {
        return std::nullopt;
    }
    // The rows of sysobjects, INFORMATION_SCHEMA.TABLES...; absent when there is no such view.
    [[nodiscard]] virtual std::optional<SystemRows> systemRows(
        const tsql::ObjectName& /*name*/) const {
        return std::nullopt;
    }
};

// The name under which a default that was not named is listed.
[[nodiscard]] std::string unnamedDefault(const Table& table, std::string_view column);

// Whether two names of the database are the same: letter case is ignored in every language.
[[nodiscard]] bool sameName(std::string_view left, std::string_view right);

// Whether the name belongs to a table that the file needs for itself; no object can have it.
[[nodiscard]] bool isKeptByTheFile(std::string_view name);

}  // namespace kap::engine
