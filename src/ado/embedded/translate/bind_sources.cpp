#include <algorithm>
#include <iterator>

#include "ado/embedded/translate/binder.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::JoinKind;
using tsql::ServerError;

namespace {

std::string columnSql(const std::string& source, const std::string& column) {
    return sqlName(source) + "." + sqlName(column);
}

const char* joinWord(JoinKind kind) {
    switch (kind) {
        case JoinKind::Inner:
            return " JOIN ";
        case JoinKind::Left:
            return " LEFT JOIN ";
        case JoinKind::Right:
            return " RIGHT JOIN ";
        case JoinKind::Full:
            return " FULL JOIN ";
        case JoinKind::Cross:
            return " CROSS JOIN ";
    }
    return "";
}

void makeNullable(std::vector<Source>& sources) {
    for (Source& source : sources) {
        for (SourceColumn& column : source.columns)
            column.value.nullable = true;
    }
}

// Two sources of one name could not be told apart. Aliases are named by error 1011, tables by 1013.
void checkNames(const std::vector<Source>& sources, int line) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (!sameName(sources[i].name, sources[j].name)) continue;
            const auto isTable = [](const Source& source) {
                return source.table != nullptr && sameName(source.table->name, source.name);
            };
            if (isTable(sources[i]) && isTable(sources[j])) {
                throw ServerError(
                    1013,
                    "The objects \"" + sources[j].name + "\" and \"" + sources[i].name +
                        "\" in the FROM clause have the same exposed names. Use correlation names "
                        "to distinguish them.",
                    line, 15);
            }
            throw ServerError(1011,
                              "The correlation name '" + sources[i].name +
                                  "' is specified multiple times in a FROM clause.",
                              line, 15);
        }
    }
}

void append(std::vector<Source>& all, std::vector<Source> more) {
    std::move(more.begin(), more.end(), std::back_inserter(all));
}

}  // namespace

Source Binder::tableSource(const Table& table, const std::string& name) {
    Source source{name, &table, {}};
    for (const Column& column : table.columns) {
        Typed value = Typed::expression(columnSql(name, column.name), column.type, column.nullable);
        value.table = &table;
        value.column = &column;
        value.plainColumn = true;
        source.columns.push_back({column.name, std::move(value)});
    }
    return source;
}

BoundSource Binder::from(const std::vector<tsql::TableSourcePtr>& sources, Scope& scope) {
    BoundSource result;
    for (const auto& each : sources) {
        BoundSource bound = source(*each, scope);
        // Joins bind closer than commas, which SQLite would read from left to right.
        const bool brackets = bound.isJoin && !result.sql.empty();
        result.sql += (result.sql.empty() ? "" : " CROSS JOIN ") +
                      (brackets ? "(" + bound.sql + ")" : bound.sql);
        append(result.sources, std::move(bound.sources));
    }
    if (!sources.empty()) checkNames(result.sources, sources.front()->line);
    return result;
}

BoundSource Binder::source(const tsql::TableSource& source, Scope& scope) {
    if (const auto* table = std::get_if<tsql::NamedTable>(&source.node)) return namedTable(*table);
    if (const auto* derived = std::get_if<tsql::DerivedTable>(&source.node)) {
        return derivedTable(*derived, source.line, scope);
    }
    return join(std::get<tsql::Join>(source.node), source.line, scope);
}

BoundSource Binder::namedTable(const tsql::NamedTable& named) const {
    const Table& table = requireTable(named.name, catalogue_);
    const std::string& name = named.alias.empty() ? table.name : named.alias;
    return {tableSql(table.name, table.temporary) + " AS " + sqlName(name),
            {tableSource(table, name)},
            false};
}

BoundSource Binder::derivedTable(const tsql::DerivedTable& derived, int line, Scope& scope) {
    BoundQuery bound = query(*derived.query, scope.outer, QueryPlace::Nested);
    if (!derived.columnAliases.empty()) {
        if (derived.columnAliases.size() != bound.columns.size()) {
            const bool more = derived.columnAliases.size() < bound.columns.size();
            throw ServerError(more ? 8158 : 8159,
                              "'" + derived.alias + "' has " + (more ? "more" : "fewer") +
                                  " columns than were specified in the column list.",
                              line);
        }
        for (std::size_t i = 0; i < bound.columns.size(); ++i)
            bound.columns[i].name = derived.columnAliases[i];
    }
    checkOwnNames(bound.columns, derived.alias, line);
    Source result{derived.alias, nullptr, {}};
    for (std::size_t i = 0; i < bound.columns.size(); ++i) {
        Typed value = std::move(bound.columns[i].value);
        value.sql = sqlName(derived.alias) + "." + numberedName(i);
        value.constant.reset();
        value.nullLiteral = false;
        result.columns.push_back({std::move(bound.columns[i].name), std::move(value)});
    }
    return {"(" + bound.sql + ") AS " + sqlName(derived.alias), {std::move(result)}, false};
}

BoundSource Binder::join(const tsql::Join& join, int line, Scope& scope) {
    BoundSource left = source(*join.left, scope);
    BoundSource right = source(*join.right, scope);
    std::string sql =
        left.sql + joinWord(join.kind) + (right.isJoin ? "(" + right.sql + ")" : right.sql);
    if (join.kind == JoinKind::Left || join.kind == JoinKind::Full) makeNullable(right.sources);
    if (join.kind == JoinKind::Right || join.kind == JoinKind::Full) makeNullable(left.sources);
    append(left.sources, std::move(right.sources));
    checkNames(left.sources, line);
    if (join.condition) {
        Scope joined;
        joined.outer = scope.outer;
        joined.sources = std::move(left.sources);
        joined.aggregates = AggregateUse::RefusedInOn;
        sql += " ON " + condition(*join.condition, joined);
        left.sources = std::move(joined.sources);
    }
    return {std::move(sql), std::move(left.sources), true};
}

}  // namespace kap::ado::embedded
