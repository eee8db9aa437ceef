#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/catalog/object_names.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

using tsql::JoinKind;
using tsql::ServerError;

namespace {

constexpr std::size_t kDeepestViews = 32;
// In one statement: views that read others twice are read twice as often with every level.
constexpr std::size_t kMostViews = 20'000;

sql::JoinOperator operatorOf(JoinKind kind) {
    switch (kind) {
        case JoinKind::Inner:
            return sql::JoinOperator::Inner;
        case JoinKind::Left:
        case JoinKind::OuterApply:
            return sql::JoinOperator::Left;
        case JoinKind::Right:
            return sql::JoinOperator::Right;
        case JoinKind::Full:
            return sql::JoinOperator::Full;
        case JoinKind::Cross:
        case JoinKind::CrossApply:
            break;
    }
    return sql::JoinOperator::Cross;
}

void makeNullable(std::vector<Source>& sources) {
    for (Source& source : sources) {
        for (SourceColumn& column : source.columns)
            column.value.nullable = true;
    }
}

// The names that stand behind the alias of a query, or in the definition of a view.
void nameColumns(std::vector<OutputColumn>& columns, const std::vector<std::string>& names,
                 const std::string& source, int line) {
    if (names.empty()) return;
    if (names.size() != columns.size()) {
        const bool more = names.size() < columns.size();
        throw ServerError(
            more ? tsql::Message::MoreColumnsThanNames : tsql::Message::FewerColumnsThanNames,
            {source}, line);
    }
    for (std::size_t i = 0; i < columns.size(); ++i)
        columns[i].name = names[i];
}

// Rows of constants under the names of a query's columns.
sql::Select constantRows(std::size_t columns, std::vector<std::vector<Value>> rows) {
    sql::Select result;
    sql::Select nothing;
    for (std::size_t i = 0; i < columns; ++i) {
        std::string own = "column" + plain::text(static_cast<std::int64_t>(i) + 1);
        nothing.items.push_back({sql::null(), own});
        result.items.push_back(numberedItem(sql::Column{{}, std::move(own), true}, i));
    }
    if (rows.empty()) {
        nothing.where = sql::number(0);
        result.from = sql::from(sql::Derived{std::move(nothing)});
        return result;
    }
    sql::Values values;
    values.rows.reserve(rows.size());
    for (std::vector<Value>& row : rows) {
        std::vector<sql::Expression>& cells = values.rows.emplace_back();
        cells.reserve(row.size());
        for (Value& value : row)
            cells.emplace_back(sql::Constant{std::move(value)});
    }
    result.from = sql::from(sql::Derived{sql::Query{std::move(values)}});
    return result;
}

void append(std::vector<Source>& all, std::vector<Source> more) {
    std::move(more.begin(), more.end(), std::back_inserter(all));
}

}  // namespace

// Two sources of one name could not be told apart. Aliases are named by error 1011, tables by 1013.
void Binder::checkNames(const std::vector<Source>& sources, int line) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (!sameName(sources[i].name, sources[j].name)) continue;
            const auto isTable = [](const Source& source) {
                return source.table != nullptr && !source.object.empty();
            };
            if (isTable(sources[i]) && isTable(sources[j])) {
                throw ServerError(tsql::Message::SameExposedNames,
                                  {sources[j].name, sources[i].name}, line);
            }
            throw ServerError(tsql::Message::CorrelationNameTwice, {sources[i].name}, line);
        }
    }
}

Source Binder::tableSource(const Table& table, const std::string& name) {
    Source source{name, &table, {}};
    if (sameName(name, table.name)) source.object = table.name;
    for (const Column& column : table.columns) {
        BoundExpression value = BoundExpression::expression(sql::column(name, column.name),
                                                            column.type, column.nullable);
        value.table = &table;
        value.column = &column;
        value.plainColumn = true;
        value.collation = column.collation;
        value.coercibility = Coercibility::Implicit;
        source.columns.push_back({column.name, std::move(value)});
    }
    return source;
}

BoundSource Binder::from(const std::vector<tsql::TableSourcePtr>& sources, Scope& scope) {
    BoundSource result;
    for (const auto& each : sources) {
        // Joins bind closer than commas, which SQLite would read from left to right.
        const bool first = result.from.empty();
        BoundSource bound = first ? source(*each, scope) : bracketedSource(*each, scope);
        if (first) {
            result.from = std::move(bound.from);
        } else {
            sql::join(result.from, sql::JoinOperator::Cross, std::move(bound.from));
        }
        append(result.sources, std::move(bound.sources));
    }
    if (!sources.empty()) checkNames(result.sources, sources.front()->line);
    return result;
}

BoundSource Binder::source(const tsql::TableSource& source, Scope& scope) {
    tsql::requireStack(source.line);
    if (const auto* table = std::get_if<tsql::NamedTable>(&source.node)) return namedTable(*table);
    if (const auto* derived = std::get_if<tsql::DerivedTable>(&source.node)) {
        return derivedTable(*derived, source.line, scope);
    }
    if (const auto* function = std::get_if<tsql::FunctionTable>(&source.node)) {
        return functionTable(*function, source.line, scope);
    }
    if (const auto* pivot = std::get_if<tsql::PivotTable>(&source.node)) {
        return pivotTable(*pivot, source.line, scope);
    }
    if (const auto* unpivot = std::get_if<tsql::UnpivotTable>(&source.node)) {
        return unpivotTable(*unpivot, source.line, scope);
    }
    return join(std::get<tsql::Join>(source.node), source.line, scope);
}

BoundSource Binder::targetFrom(const std::vector<tsql::TableSourcePtr>& sources, Scope& scope) {
    const Restored numbers(needsRowNumbers_, true);
    return from(sources, scope);
}

// A join as one side of another. SQLite reads it like a query, so that the numbers of its rows are
// out of sight.
BoundSource Binder::bracketedSource(const tsql::TableSource& source, Scope& scope) {
    if (!std::holds_alternative<tsql::Join>(source.node)) return this->source(source, scope);
    const Restored brackets(withinBrackets_, true);
    return this->source(source, scope);
}

Source Binder::ownColumns(const Table& table) {
    Source source = tableSource(table, table.name);
    for (std::size_t i = 0; i < source.columns.size(); ++i)
        source.columns[i].value.tree = sql::column(table.columns[i].name);
    return source;
}

BoundSource Binder::namedTable(const tsql::NamedTable& named) {
    if (named.sample) return sampledTable(named);
    if (CommonName* common = findCommon(commonNameOf(named.name))) {
        common->readAs = named.alias.empty() ? named.name.last() : named.alias;
        ++common->reads;
        if (common->recursiveAt && *common->recursiveAt < queryDepth_) {
            throw ServerError(tsql::Message::RecursionInSubquery, {}, named.name.line);
        }
        deepestRead_ = std::max(deepestRead_, common->depth);
        return commonSource(*common, common->readAs);
    }
    if (table(named.name) == nullptr) {
        if (auto view = viewSource(named)) return std::move(*view);
        if (auto system = systemSource(named)) return std::move(*system);
    }
    return storedTable(named.name, named.alias);
}

BoundSource Binder::storedTable(const tsql::ObjectName& named, const std::string& alias) const {
    const Table* found = table(named);
    if (found == nullptr) noSuchTable(named);
    const Table& table = *found;
    const std::string name = alias.empty() ? shownName(table, named, names_) : alias;
    Source source = tableSource(table, name);
    if (alias.empty() && catalogue().findSynonym(name) != nullptr) source.object = name;
    if (!needsRowNumbers_ || !withinBrackets_) {
        return {sql::from(tableName(table, name)), {std::move(source)}};
    }
    source.rowNumber = sql::column(name, kRowNumber);
    return {sql::from(sql::Derived{numberedRows(table), name}), {std::move(source)}};
}

BoundSource Binder::derivedTable(const tsql::DerivedTable& derived, int line, Scope& scope) {
    return querySource(query(*derived.query, scope.outer, QueryPlace::Nested),
                       derived.columnAliases, derived.alias, line);
}

// A query that is read from as from a table.
BoundSource Binder::querySource(BoundQuery bound, const std::vector<std::string>& columnNames,
                                const std::string& name, int line) {
    nameColumns(bound.columns, columnNames, name, line);
    checkOwnNames(bound.columns, name, line);
    Source result{name, nullptr, {}};
    for (std::size_t i = 0; i < bound.columns.size(); ++i) {
        BoundExpression value = bound.columns[i].value.readBy(numberedColumn(name, i));
        value.nullLiteral = false;
        result.columns.push_back({std::move(bound.columns[i].name), std::move(value)});
    }
    return {sql::from(sql::Derived{std::move(bound.tree), name}), {std::move(result)}};
}

BoundSource Binder::commonSource(const CommonName& common, const std::string& name) const {
    Source result{name, nullptr, {}, common.name};
    for (std::size_t i = 0; i < common.columns.size(); ++i) {
        result.columns.push_back(
            {common.columns[i].name, common.columns[i].value.readBy(numberedColumn(name, i))});
    }
    return {sql::from(sql::TableName{sql::Database::None, common.name, name}), {std::move(result)}};
}

// A view is read as the query that it stands for.
std::optional<BoundSource> Binder::viewSource(const tsql::NamedTable& named) {
    const View* view = this->view(named.name);
    if (view == nullptr) return std::nullopt;
    if (std::find(openViews_.begin(), openViews_.end(), view) != openViews_.end()) {
        throw ServerError(tsql::Message::ViewReadsItself, {bareName(view->name)}, named.name.line);
    }
    if (openViews_.size() >= kDeepestViews) {
        throw ServerError(tsql::Message::NestingLevelExceeded, {}, named.name.line);
    }
    if (++viewsRead_ > kMostViews) {
        throw ServerError(tsql::Message::OutOfInternalResources, {}, named.name.line);
    }
    openViews_.push_back(view);
    const std::vector<CommonName> outerNames = std::exchange(commonNames_, {});
    const Restored schema(schema_, std::string(schemaOf(view->name)));
    BoundQuery bound = query(*view->query, nullptr, QueryPlace::Nested);
    commonNames_ = outerNames;
    openViews_.pop_back();
    const std::string exposed = exposedName(view->name, named.name, names_);
    BoundSource source = querySource(std::move(bound), view->columns,
                                     named.alias.empty() ? exposed : named.alias, named.name.line);
    if (named.alias.empty()) source.sources.front().object = exposed;
    return source;
}

// What the database tells of itself stands in the statement as rows of constants.
std::optional<BoundSource> Binder::systemSource(const tsql::NamedTable& named) const {
    auto system = catalogue().systemRows(named.name);
    if (!system) return std::nullopt;
    noteSchema();
    if (system->ofTheMoment) noteMoment();
    BoundQuery bound;
    for (std::size_t i = 0; i < system->columns.size(); ++i) {
        const auto& [name, type] = system->columns[i];
        bound.columns.push_back({name, BoundExpression::expression(numberedColumn(i), type, true)});
    }
    bound.tree = {constantRows(system->columns.size(), std::move(system->rows))};
    BoundSource source =
        querySource(std::move(bound), {}, named.alias.empty() ? named.name.last() : named.alias,
                    named.name.line);
    if (named.alias.empty()) {
        const bool qualified = named.name.parts.size() > 1;
        const std::string schema = qualified ? named.name.parts[named.name.parts.size() - 2] : "";
        source.sources.front().object =
            storedName(schema.empty() ? kDefaultSchema : schema, named.name.last());
    }
    return source;
}

BoundSource Binder::join(const tsql::Join& join, int line, Scope& scope) {
    if (join.kind == JoinKind::CrossApply || join.kind == JoinKind::OuterApply) {
        return apply(join, line, scope);
    }
    BoundSource left = source(*join.left, scope);
    BoundSource right = bracketedSource(*join.right, scope);
    if (join.kind == JoinKind::Left || join.kind == JoinKind::Full) makeNullable(right.sources);
    if (join.kind == JoinKind::Right || join.kind == JoinKind::Full) makeNullable(left.sources);
    append(left.sources, std::move(right.sources));
    checkNames(left.sources, line);
    sql::Expression matches;
    if (join.condition) {
        Scope joined;
        joined.outer = scope.outer;
        joined.sources = std::move(left.sources);
        joined.aggregates = AggregateUse::RefusedInOn;
        matches = condition(*join.condition, joined);
        left.sources = std::move(joined.sources);
    }
    sql::join(left.from, operatorOf(join.kind), std::move(right.from), std::move(matches));
    return left;
}

}  // namespace kap::engine
