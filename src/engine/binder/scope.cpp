#include "engine/binder/scope.hpp"

#include <algorithm>

#include "engine/binder/server_functions.hpp"
#include "engine/catalog/object_names.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ObjectName;
using tsql::ServerError;

namespace {

// "dbo.t" and "t" are the same source; another schema is another table.
bool meansSource(const ObjectName& name, std::size_t parts, const Source& source) {
    const std::string& own = name.parts[parts - 1];
    if (source.object.empty()) return parts == 1 && sameName(own, source.name);
    const std::string& schema = parts >= 2 ? name.parts[parts - 2] : std::string();
    return sameName(own, bareName(source.object)) &&
           (schema.empty() || sameName(schema, schemaOf(source.object)));
}

const SourceColumn* findIn(const Source& source, const std::string& name) {
    auto found =
        std::find_if(source.columns.begin(), source.columns.end(),
                     [&](const SourceColumn& column) { return sameName(column.name, name); });
    if (found == source.columns.end() && sameName(name, "$identity")) {
        found = std::find_if(
            source.columns.begin(), source.columns.end(), [](const SourceColumn& column) {
                return column.value.column != nullptr && column.value.column->identity.has_value();
            });
    }
    return found == source.columns.end() ? nullptr : &*found;
}

ServerError invalidColumn(const ObjectName& name) {
    return {tsql::Message::InvalidColumn, {name.last()}, name.line};
}

const SourceColumn* findUnqualified(const ObjectName& name, const Scope& scope) {
    const SourceColumn* found = nullptr;
    for (const Source& source : scope.sources) {
        const SourceColumn* candidate = findIn(source, name.last());
        if (candidate == nullptr) continue;
        if (found != nullptr) {
            throw ServerError(tsql::Message::AmbiguousColumn, {name.last()}, name.line);
        }
        found = candidate;
    }
    return found;
}

const SourceColumn* findQualified(const ObjectName& name, const Scope& scope) {
    for (const Source& source : scope.sources) {
        if (!meansSource(name, name.parts.size() - 1, source)) continue;
        const SourceColumn* found = findIn(source, name.last());
        if (found == nullptr) throw invalidColumn(name);
        return found;
    }
    return nullptr;
}

void checkGrouped(const BoundExpression& value, const ObjectName& name, const Scope& scope) {
    if (!scope.grouped || scope.insideAggregate) return;
    const bool grouped =
        std::find(scope.groups.begin(), scope.groups.end(), value.tree) != scope.groups.end();
    if (grouped) return;
    const std::string shown = value.table != nullptr && name.parts.size() == 1
                                  ? value.table->name + "." + value.column->name
                                  : name.text();
    const std::string clause = scope.groupedClause;
    const tsql::Message message = clause == "select list"     ? tsql::Message::UngroupedInSelectList
                                  : clause == "HAVING clause" ? tsql::Message::UngroupedInHaving
                                                              : tsql::Message::UngroupedInOrderBy;
    throw ServerError(message, {shown}, name.line);
}

// SQLite computes limits before it looks at any row, also of the queries around.
[[noreturn]] void columnInLimit(const ObjectName& name, bool ofOwnQuery) {
    if (!ofOwnQuery) {
        throw tsql::unsupported("a column of an outer query in TOP, OFFSET or FETCH", name.line);
    }
    throw ServerError(tsql::Message::ColumnNotAllowedInTop, {name.last()}, name.line);
}

}  // namespace

sql::Expression GivenValues::given(const sql::Expression& value) {
    const auto found = std::ranges::find(values, value);
    const auto place = static_cast<int>(found - values.begin());
    if (found == values.end()) values.push_back(value);
    return sql::Parameter{place + 1};
}

namespace {

// A column of a level further out, as what stands at `scope` can read it.
const SourceColumn& readFrom(const Scope& scope, const Scope* level, const SourceColumn& column) {
    std::vector<GivenValues*> crossed;
    for (const Scope* each = &scope;; each = each->outer) {
        if (each->given != nullptr) crossed.push_back(each->given);
        if (each == level) break;
    }
    if (crossed.empty()) return column;
    SourceColumn& own = crossed.front()->columns.emplace_back(column);
    own.value.plainColumn = false;
    for (auto given = crossed.rbegin(); given != crossed.rend(); ++given)
        own.value = own.value.readBy((*given)->given(own.value.tree));
    return own;
}

}  // namespace

const SourceColumn& resolveColumn(const ObjectName& name, const Scope& scope) {
    if (scope.columnsRefused) {
        throw ServerError(tsql::Message::NameNotPermitted, {name.text()}, name.line);
    }
    const bool qualified = name.parts.size() > 1;
    const Scope* limits = nullptr;
    for (const Scope* level = &scope; level != nullptr; level = level->outer) {
        const SourceColumn* found =
            qualified ? findQualified(name, *level) : findUnqualified(name, *level);
        if (level->limitsRows) limits = level;
        if (found == nullptr) continue;
        const bool ofOwnQuery = limits != nullptr && limits->outer == level;
        if (limits != nullptr && (ofOwnQuery || !limits->limitReadsOuter)) {
            columnInLimit(name, ofOwnQuery);
        }
        (level == &scope ? scope.readsOwn : scope.readsOuter) = true;
        checkGrouped(found->value, name, *level);
        if (level != &scope && level->grouped && level->groupingSets) {
            throw tsql::unsupported("a group of several grouping sets within a subquery",
                                    name.line);
        }
        return readFrom(scope, level, *found);
    }
    if (!qualified) throw invalidColumn(name);
    throw ServerError(tsql::Message::MultiPartNotBound, {name.text()}, name.line);
}

const Source& resolveQualifier(const ObjectName& name, const Scope& scope) {
    for (const Source& source : scope.sources) {
        if (meansSource(name, name.parts.size(), source)) return source;
    }
    throw ServerError(tsql::Message::PrefixMatchesNoTable, {name.text()}, name.line);
}

const Table* findTable(const ObjectName& name, const NameScope& names, std::string_view schema) {
    if (name.parts.size() == 1) {
        if (const Table* local = names.localTable(name.last())) return local;
    }
    const std::string stored = followedName(name, schema, names.catalogue());
    return stored.empty() ? nullptr : names.catalogue().find(stored);
}

const View* findView(const ObjectName& name, const NameScope& names, std::string_view schema) {
    const std::string stored = followedName(name, schema, names.catalogue());
    return stored.empty() ? nullptr : names.catalogue().findView(stored);
}

const Table* findTable(const ObjectName& name, const NameScope& names) {
    return findTable(name, names, names.schema());
}

const View* findView(const ObjectName& name, const NameScope& names) {
    return findView(name, names, names.schema());
}

const Table* findOwnTable(const ObjectName& name, const NameScope& names) {
    const std::string stored = resolvedName(name, names.schema(), names.catalogue());
    return names.catalogue().findSynonym(stored) != nullptr ? nullptr : findTable(name, names);
}

const Table& requireTable(const ObjectName& name, const NameScope& names) {
    const Table* table = findTable(name, names);
    if (table == nullptr) noSuchTable(name);
    return *table;
}

void noSuchTable(const ObjectName& name) {
    if (name.last().front() == '@') {
        throw ServerError(tsql::Message::UndeclaredTableVariable, {name.last()}, name.line);
    }
    refuseOtherServer(name);
    if (isServerView(name)) throw tsql::unsupported("view " + name.text(), name.line);
    throw ServerError(tsql::Message::InvalidObject, {name.text()}, name.line);
}

std::string exposedName(const std::string& stored, const ObjectName& name, const NameScope& names) {
    std::string own = resolvedName(name, names.schema(), names.catalogue());
    return names.catalogue().findSynonym(own) != nullptr ? own : stored;
}

std::string shownName(const Table& table, const ObjectName& name, const NameScope& names) {
    const bool local = name.parts.size() == 1 && names.localTable(name.last()) == &table;
    return local ? name.last() : exposedName(table.name, name, names);
}

std::string tableSql(const std::string& name, bool temporary) {
    return (temporary ? "temp." : "main.") + sqlName(name);
}

}  // namespace kap::engine
