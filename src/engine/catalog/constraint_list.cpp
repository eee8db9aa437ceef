#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/catalog/table_text.hpp"
#include "engine/values/value.hpp"
#include "tsql/parser.hpp"

// The constraints, keys and indexes of the file, as the texts of its tables tell them.
namespace kap::engine {
namespace {

using tsql::Token;

// "ON DELETE SET NULL": the words of the action.
std::string actionOf(const std::vector<Token>& tokens, std::string_view event) {
    for (std::size_t i = 0; i + 3 < tokens.size(); ++i) {
        if (!isWord(tokens[i], "ON") || !isWord(tokens[i + 1], event)) continue;
        std::string action = tokens[i + 2].text;
        if (isWord(tokens[i + 2], "NO") || isWord(tokens[i + 2], "SET")) {
            action += " " + tokens[i + 3].text;
        }
        return action;
    }
    return "NO ACTION";
}

ConstraintInfo ofText(const std::string& table, const std::string& name, const std::string& text) {
    ConstraintInfo info;
    info.name = name;
    info.table = table;
    const std::vector<Token> tokens = tokensOf(text);
    for (std::size_t i = 2; i < tokens.size(); ++i) {
        if (isWord(tokens[i], "PRIMARY") || isWord(tokens[i], "UNIQUE")) {
            info.type = isWord(tokens[i], "PRIMARY") ? "PK" : "UQ";
            info.columns = bracketedNames(tokens, i);
            return info;
        }
        if (isWord(tokens[i], "FOREIGN")) {
            info.type = "F ";
            info.columns = bracketedNames(tokens, i);
            for (std::size_t at = i; at + 1 < tokens.size(); ++at) {
                if (!isWord(tokens[at], "REFERENCES")) continue;
                info.parent = tokens[at + 1].text;
                info.parentColumns = bracketedNames(tokens, at + 1);
                break;
            }
            info.onDelete = actionOf(tokens, "DELETE");
            info.onUpdate = actionOf(tokens, "UPDATE");
            return info;
        }
        if (isWord(tokens[i], "CHECK")) {
            info.type = "C ";
            info.definition = text.substr(tokens[i].end + 1);
            info.source = shownDefinition(info.definition);
            return info;
        }
    }
    info.type = "C ";
    return info;
}

// What stands behind WHERE in the text of an index.
std::string filterOf(const std::string& sql) {
    const std::vector<Token> tokens = tokensOf(sql);
    const auto where =
        std::ranges::find_if(tokens, [](const Token& token) { return isWord(token, "WHERE"); });
    return where == tokens.end() ? shownDefinition(sql)
                                 : shownDefinition(std::string_view(sql).substr(where->end + 1));
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
        const TableText text(look.text(0));
        for (const TableText::Element& element : text.elements()) {
            if (element.constraint) {
                result.push_back(ofText(table->name, element.name, element.text));
                continue;
            }
            const Column* column = table->find(element.name);
            if (column == nullptr || column->computed || !column->defaultSql) continue;
            ConstraintInfo info;
            info.name = defaultNameOf(element.text);
            if (info.name.empty()) info.name = unnamedDefault(*table, element.name);
            info.type = "D ";
            info.table = table->name;
            info.columns = {element.name};
            info.definition = "(" + *column->defaultSql + ")";
            info.source = shownSource(*column);
            result.push_back(std::move(info));
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
            info = ofText(object.parent, info.name, object.text);
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
        const ConstraintInfo info = ofText(object.parent, nameAtParent(object), object.text);
        if (std::string_view(info.type) != "F ") continue;
        result.push_back(
            {info.table, info.parent, actionNamed(info.onDelete), actionNamed(info.onUpdate)});
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
        if (!rows.isNull(3)) info.filter = filterOf(rows.text(3));
        IndexNotes notes = notesOf(rows.text(4));
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
