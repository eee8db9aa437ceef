#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <variant>

#include "engine/catalog/definition_reader.hpp"
#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "engine/values/value.hpp"
#include "tsql/parser.hpp"

// The constraints, keys and indexes of the file, as the texts of its tables tell them.
namespace kap::engine {
namespace {

// Fills in what the kinds of constraints have of their own.
struct ConstraintTeller {
    ConstraintInfo& info;

    void operator()(const sql::KeyConstraint& key) const {
        info.type = key.primary ? "PK" : "UQ";
        info.columns = key.columns;
    }
    void operator()(const sql::ForeignKey& key) const {
        info.type = "F ";
        info.columns = key.columns;
        info.parent = key.parent;
        info.parentColumns = key.parentColumns;
        info.onDelete = textOf(key.onDelete);
        info.onUpdate = textOf(key.onUpdate);
    }
    void operator()(const sql::CheckConstraint& check) const {
        info.definition = sqlOf(check.condition.value);
        info.source = check.condition.source ? shownDefinition(check.condition) : info.definition;
    }
    void operator()(const sql::OtherConstraint& /*other*/) const {}
};

ConstraintInfo toldOf(const std::string& table, const sql::Constraint& constraint) {
    ConstraintInfo info;
    info.name = constraint.name;
    info.type = "C ";
    info.table = table;
    std::visit(ConstraintTeller{info}, constraint.kind);
    return info;
}

}  // namespace

std::string storedName(const ConstraintInfo& constraint) {
    return storedName(schemaOf(constraint.table), constraint.name);
}

std::vector<ConstraintInfo> SchemaCatalogue::constraints() const {
    std::vector<ConstraintInfo> result;
    for (const Table* table : tables()) {
        PreparedStatement look(database_.handle(),
                               "SELECT sql FROM main.sqlite_schema WHERE type = 'table' AND name = "
                               "?1");
        look.bind(1, std::string_view(table->name));
        if (!look.step()) continue;  // a view of another program
        const auto definition = readTable(look.text(0));
        if (!definition) continue;
        for (const sql::ColumnDefinition& each : definition->columns) {
            const Column* column = table->find(each.name);
            if (column == nullptr || column->computed || !column->defaultSql) continue;
            ConstraintInfo info;
            if (each.defaultValue) info.name = each.defaultValue->name;
            if (info.name.empty()) info.name = unnamedDefault(*table, each.name);
            info.type = "D ";
            info.table = table->name;
            info.columns = {each.name};
            info.definition = "(" + *column->defaultSql + ")";
            info.source = shownSource(*column);
            result.push_back(std::move(info));
        }
        for (const sql::Constraint& each : definition->constraints) {
            if (!each.name.empty()) result.push_back(toldOf(table->name, each));
        }
    }
    for (const StoredObject& object : objects()) {
        ConstraintInfo info;
        info.name = nameAtParent(object);
        info.table = object.parent;
        if (object.kind == StoredKind::PrimaryKey || object.kind == StoredKind::UniqueKey) {
            info.type = object.kind == StoredKind::PrimaryKey ? "PK" : "UQ";
            info.columns = tsql::parseNames(object.text);
        } else if (object.kind == StoredKind::DisabledConstraint) {
            const auto constraint = readConstraint(object.text);
            if (!constraint) continue;
            info = toldOf(object.parent, *constraint);
            info.name = nameAtParent(object);
            info.enabled = false;
        } else {
            continue;
        }
        result.push_back(std::move(info));
    }
    return result;
}

// The primary key, and what is unique over columns and all rows.
std::vector<std::vector<std::string>> SchemaCatalogue::candidateKeys(const Table& table) const {
    std::vector<std::vector<std::string>> keys = Catalogue::candidateKeys(table);
    PreparedStatement rows(database_.handle(),
                           "SELECT l.name, i.name FROM pragma_index_list(?1, 'main') AS l, "
                           "pragma_index_info(l.name, 'main') AS i WHERE l.\"unique\" AND NOT "
                           "l.partial ORDER BY l.seq, i.seqno");
    rows.bind(1, std::string_view(table.name));
    std::string index;
    while (rows.step()) {
        if (rows.text(0) != index) keys.emplace_back();
        index = rows.text(0);
        keys.back().push_back(rows.text(1));
    }
    return keys;
}

std::optional<std::string> SchemaCatalogue::referenceAt(const Table& table) const {
    for (const ConstraintInfo& each : constraints()) {
        if (each.parent.empty() || !each.enabled) continue;
        if (sameName(each.table, table.name) || sameName(each.parent, table.name)) return each.name;
    }
    return std::nullopt;
}

std::optional<std::string> SchemaCatalogue::checkOf(const Table& table) const {
    for (const ConstraintInfo& each : constraints()) {
        const bool check = std::string_view(each.type) == "C " && each.enabled;
        if (check && sameName(each.table, table.name)) return each.name;
    }
    return std::nullopt;
}

std::optional<ConstraintInfo> SchemaCatalogue::servedBy(
    const Table& table, const std::vector<std::string>& columns) const {
    const auto fits = [&](const std::vector<std::string>& others) {
        return std::ranges::is_permutation(others, columns, sameName);
    };
    // The primary key stands twice among them: as such and as an index.
    std::size_t alike = 0;
    for (const std::vector<std::string>& key : candidateKeys(table)) {
        if (fits(key)) ++alike;
    }
    const bool primary = fits(Catalogue::candidateKeys(table).front());
    if (alike > (primary ? 2U : 1U)) return std::nullopt;
    for (const ConstraintInfo& key : constraints()) {
        const bool refers = std::string_view(key.type) == "F " && sameName(key.parent, table.name);
        if (refers && fits(key.parentColumns)) return key;
    }
    return std::nullopt;
}

namespace {

tsql::ReferenceAction actionNamed(const std::string& name) {
    if (name == "CASCADE") return tsql::ReferenceAction::Cascade;
    if (name == "SET NULL") return tsql::ReferenceAction::SetNull;
    if (name == "SET DEFAULT") return tsql::ReferenceAction::SetDefault;
    return tsql::ReferenceAction::None;
}

}  // namespace

std::vector<Reference> SchemaCatalogue::references() const {
    std::vector<Reference> result;
    PreparedStatement rows(database_.handle(),
                           "SELECT m.name, f.\"table\", f.on_delete, f.on_update FROM "
                           "main.sqlite_schema AS m, pragma_foreign_key_list(m.name, 'main') AS f "
                           "WHERE m.type = 'table' AND f.seq = 0");
    while (rows.step()) {
        result.push_back(
            {rows.text(0), rows.text(1), actionNamed(rows.text(2)), actionNamed(rows.text(3))});
    }
    // Those that are switched off come back as they were.
    for (const StoredObject& object : objects()) {
        if (object.kind != StoredKind::DisabledConstraint) continue;
        const auto constraint = readConstraint(object.text);
        const auto* key = constraint ? std::get_if<sql::ForeignKey>(&constraint->kind) : nullptr;
        if (key == nullptr) continue;
        result.push_back({object.parent, key->parent, key->onDelete, key->onUpdate});
    }
    return result;
}

std::vector<IndexInfo> SchemaCatalogue::indexes() const {
    std::vector<IndexInfo> result;
    PreparedStatement rows(
        database_.handle(),
        "SELECT l.name, m.name, l.\"unique\", CASE WHEN l.partial THEN i.sql END, i.sql FROM "
        "main.sqlite_schema AS m, pragma_index_list(m.name, 'main') AS l, "
        "main.sqlite_schema AS i WHERE m.type = 'table' AND l.origin = 'c' AND "
        "i.type = 'index' AND i.name = l.name ORDER BY m.name, l.name");
    while (rows.step()) {
        const std::string stored = rows.text(0);
        IndexInfo info;
        info.table = rows.text(1);
        info.unique = rows.integer(2) != 0;
        const bool own = stored.starts_with(info.table + ".");
        info.name = own ? stored.substr(info.table.size() + 1) : stored;
        if (own && info.name.ends_with(" (nulls)")) continue;
        if (!rows.isNull(3)) {
            const auto read = readIndex(rows.text(3));
            info.filter =
                read && read->where ? shownDefinition(*read->where) : shownDefinition(rows.text(3));
        }
        sql::IndexNotes notes = notesOf(rows.text(4));
        info.ignoresDuplicates = notes.ignoresDuplicates;
        info.included = std::move(notes.included);
        PreparedStatement columns(database_.handle(),
                                  "SELECT name, \"desc\" FROM pragma_index_xinfo(?1, 'main') "
                                  "WHERE \"key\" ORDER BY seqno");
        columns.bind(1, std::string_view(stored));
        while (columns.step()) {
            info.columns.push_back(columns.text(0));
            info.descending.push_back(columns.integer(1) != 0);
        }
        result.push_back(std::move(info));
    }
    return result;
}

std::vector<IndexInfo> SchemaCatalogue::keysAndIndexes() const {
    const std::vector<ConstraintInfo> keys = constraints();
    const std::vector<IndexInfo> made = indexes();
    std::vector<IndexInfo> result;
    for (const Table* table : tables()) {
        const auto servesKey = [&](const IndexInfo& index) {
            return std::ranges::any_of(keys, [&](const ConstraintInfo& key) {
                return sameName(key.table, index.table) && sameName(key.name, index.name);
            });
        };
        for (const ConstraintInfo& key : keys) {
            const std::string_view type = key.type;
            if ((type == "PK" || type == "UQ") && sameName(key.table, table->name)) {
                result.push_back({key.name,
                                  table->name,
                                  true,
                                  type,
                                  key.columns,
                                  std::vector<bool>(key.columns.size()),
                                  {}});
                result.back().ignoresDuplicates =
                    !table->ignoring.empty() && ignoresDuplicates(*table, key, made);
            }
        }
        std::ranges::copy_if(made, std::back_inserter(result), [&](const IndexInfo& index) {
            return sameName(index.table, table->name) && !servesKey(index);
        });
    }
    return result;
}

}  // namespace kap::engine
