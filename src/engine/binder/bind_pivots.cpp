#include <algorithm>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "engine/binder/binder.hpp"
#include "tsql/server_error.hpp"

// PIVOT and UNPIVOT.
namespace kap::engine {

using tsql::ServerError;

namespace {

// The name under which the rows stand that are turned.
constexpr const char* kTurned = "kap turned";
// The numbers and the names of the columns that UNPIVOT lists, as SQLite names columns of VALUES.
constexpr const char* kNames = "kap names";

sql::Expression nameColumn(int place) {
    return sql::Column{kNames, "column" + plain::text(place), true};
}

bool standsAmong(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::any_of(names,
                               [&](const std::string& each) { return sameName(each, name); });
}

}  // namespace

// The rows are grouped by the columns that PIVOT does not name.
BoundSource Binder::pivotTable(const tsql::PivotTable& pivot, int line, Scope& scope) {
    BoundSource rows =
        querySource(query(*pivot.rows, scope.outer, QueryPlace::Nested), {}, kTurned, line);
    Scope turned;
    turned.outer = scope.outer;
    turned.sources = std::move(rows.sources);
    turned.aggregates = AggregateUse::Allowed;
    const tsql::ObjectName column{{pivot.column.last()}, line};
    const SourceColumn& turnedColumn = resolveColumn(column, turned);
    const SourceColumn* value =
        pivot.value.parts.empty() ? nullptr : &resolveColumn({{pivot.value.last()}, line}, turned);
    BoundQuery result;
    sql::Select select;
    for (const SourceColumn& each : turned.sources.front().columns) {
        if (&each == &turnedColumn || &each == value) continue;
        if (standsAmong(pivot.names, each.name)) {
            throw ServerError(tsql::Message::ColumnNamedTwice, {each.name, pivot.alias}, line);
        }
        select.groups.push_back(collated(each.value));
        select.items.push_back(numberedItem(each.value.tree, result.columns.size()));
        result.columns.push_back({each.name, each.value});
    }
    for (std::size_t i = 0; i < pivot.names.size(); ++i) {
        BoundExpression aggregate = this->value(*pivot.aggregates[i], turned);
        aggregate.nullable = true;
        select.items.push_back(numberedItem(aggregate.tree, result.columns.size()));
        result.columns.push_back({pivot.names[i], std::move(aggregate)});
    }
    select.from = std::move(rows.from);
    result.tree = {std::move(select)};
    return querySource(std::move(result), pivot.columnAliases, pivot.alias, line);
}

// Each row is taken once for every column of the list, beside the numbers of these.
BoundSource Binder::unpivotTable(const tsql::UnpivotTable& unpivot, int line, Scope& scope) {
    BoundSource rows =
        querySource(query(*unpivot.rows, scope.outer, QueryPlace::Nested), {}, kTurned, line);
    Scope turned;
    turned.sources = std::move(rows.sources);
    sql::Case values{nameColumn(1), {}};
    sql::Values numbers;
    const SourceColumn* first = nullptr;
    for (std::size_t i = 0; i < unpivot.columns.size(); ++i) {
        const SourceColumn& each = resolveColumn({{unpivot.columns[i]}, line}, turned);
        if (first == nullptr) first = &each;
        if (!(each.value.type == first->value.type)) {
            throw ServerError(tsql::Message::UnpivotTypesDiffer, {each.name}, line);
        }
        const auto number = static_cast<std::int64_t>(i) + 1;
        values.branches.push_back({sql::number(number), each.value.tree});
        numbers.rows.push_back({sql::number(number), sql::text(each.name)});
    }
    BoundQuery result;
    sql::Select select;
    const auto add = [&](const std::string& name, const sql::Expression& tree,
                         const tsql::TypeSpec& type, bool nullable) {
        const std::size_t place = result.columns.size();
        select.items.push_back(numberedItem(tree, place));
        result.columns.push_back(
            {name, BoundExpression::expression(numberedColumn(place), type, nullable)});
    };
    for (const SourceColumn& each : turned.sources.front().columns) {
        if (standsAmong(unpivot.columns, each.name)) continue;
        add(each.name, collated(each.value), each.value.type, each.value.nullable);
    }
    constexpr int kNameLength = 128;
    const sql::Expression value = std::move(values);
    add(unpivot.value, value, first->value.type, false);
    add(unpivot.name, nameColumn(2), {tsql::SqlType::NVarChar, kNameLength}, false);
    select.from = std::move(rows.from);
    sql::join(select.from, sql::JoinOperator::Cross,
              sql::from(sql::Derived{sql::Query{std::move(numbers)}, kNames}));
    select.where = sql::isNotNull(value);
    result.tree = {std::move(select)};
    return querySource(std::move(result), unpivot.columnAliases, unpivot.alias, line);
}

}  // namespace kap::engine
