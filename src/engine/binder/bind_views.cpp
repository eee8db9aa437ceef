#include <algorithm>
#include <utility>

#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/catalog/object_names.hpp"
#include "tsql/server_error.hpp"

// Views that are written through. Such a view stands in the statement as a common table that also
// brings the numbers of the rows of the one table that is changed.
namespace kap::engine {

using tsql::ServerError;

namespace {

[[noreturn]] void severalTables(const View& view, int line) {
    throw ServerError(tsql::Message::ViewOfSeveralTablesNotUpdatable, {bareName(view.name)}, line);
}

// The SELECT of a view whose rows are rows of tables.
const tsql::Select& writableSelect(const View& view, int line) {
    const tsql::Query& query = *view.query;
    const auto* select =
        query.terms.size() == 1 ? std::get_if<tsql::Select>(&query.terms.front().node) : nullptr;
    if (select == nullptr || !query.commonTables.empty()) {
        throw ServerError(tsql::Message::UnionViewNotUpdatable, {bareName(view.name)}, line);
    }
    const bool aggregates = std::ranges::any_of(select->items, [](const tsql::SelectItem& item) {
        const auto* expression = std::get_if<tsql::ExpressionItem>(&item.node);
        return expression != nullptr && containsAggregate(*expression->value);
    });
    if (aggregates || select->distinct || !select->groupBy.empty() || select->having) {
        throw ServerError(tsql::Message::ViewWithAggregatesNotUpdatable, {bareName(view.name)},
                          line);
    }
    return *select;
}

// A row for each written row of the table that the view does not show: `rowNumber` is the column of
// the view that brings the numbers of its rows.
sql::QueryTree rowsOutside(const View& view, const Table& table, sql::Expression rowNumber,
                           std::vector<sql::CommonTable> with) {
    const sql::TableName written{sql::Database::Temporary,
                                 capturedRows(table, RowState::Inserted).name};
    sql::Select rows = sql::one(sql::number(1), sql::from(written));
    rows.where = sql::InQuery{
        sql::column("kap target"),
        sql::one(std::move(rowNumber), sql::from(sql::TableName{sql::Database::None, view.name})),
        true};
    return sql::Query{std::move(rows), std::move(with)};
}

}  // namespace

const Column& Binder::targetColumn(const Table& table, const tsql::ObjectName& name) const {
    const std::string& own = name.last();
    if (commonTarget_.table == &table) {
        for (const auto& [shown, column] : commonTarget_.columns) {
            if (!sameName(shown, own)) continue;
            if (column != nullptr && table.find(column->name) == column) return *column;
            throw ServerError(tsql::Message::DerivedFieldNotUpdatable,
                              {bareName(commonTarget_.view)}, name.line);
        }
    } else if (const Column* column = table.find(own)) {
        return *column;
    }
    throw ServerError(tsql::Message::InvalidColumn, {own}, name.line);
}

// The one table to which all columns belong that the statement writes; without such columns the
// only table there is.
const Table& Binder::writtenTable(const View& view, int line,
                                  const std::vector<Source>& sources) const {
    const Table* found = nullptr;
    const auto take = [&](const Table* table) {
        if (table == nullptr) return;
        if (found != nullptr && found != table) severalTables(view, line);
        found = table;
    };
    if (sources.size() == 1) {
        take(sources.front().table != nullptr ? sources.front().table : commonTarget_.table);
    } else if (writtenColumns_.empty()) {
        severalTables(view, line);
    } else {
        const auto& columns = commonNames_.back().columns;
        for (const std::string& name : writtenColumns_) {
            const auto column = std::ranges::find_if(
                columns, [&](const OutputColumn& each) { return sameName(each.name, name); });
            if (column == columns.end()) {
                throw ServerError(tsql::Message::InvalidColumn, {name}, line);
            }
            take(column->value.table);
        }
    }
    if (found != nullptr) return *found;
    throw ServerError(tsql::Message::DerivedFieldNotUpdatable, {bareName(view.name)}, line);
}

std::vector<sql::CommonTable> Binder::targetView(const View& view, const tsql::ObjectName& name) {
    const tsql::Select& select = writableSelect(view, name.line);
    std::vector<CommonName> outerNames = std::exchange(commonNames_, {});
    const Restored schema(schema_, std::string(schemaOf(view.name)));
    // A view of a view brings the numbers of its rows along.
    std::vector<sql::CommonTable> with;
    const auto* named = select.from.size() == 1
                            ? std::get_if<tsql::NamedTable>(&select.from.front()->node)
                            : nullptr;
    if (named != nullptr && this->table(named->name) == nullptr) {
        const View* inner = this->view(named->name);
        if (inner != nullptr) with = targetView(*inner, named->name);
    }
    const CommonTarget inner = std::exchange(commonTarget_, {});
    const Restored numbers(needsRowNumbers_, true);
    BoundSelect bound = term(view.query->terms.front(), view.query->orderBy, nullptr);
    orderRows(view.query->orderBy, bound);
    std::vector<OutputColumn> columns = bound.items;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i < view.columns.size()) columns[i].name = view.columns[i];
        const BoundExpression& shown = bound.items[i].value;
        columns[i].value = BoundExpression::expression(numberedColumn(i), shown.type, true);
        columns[i].value.table = shown.table;
        columns[i].value.column = shown.column;
    }
    commonNames_ = std::move(outerNames);
    commonNames_.push_back({view.name, columns, ""});
    commonNames_.back().isView = true;
    commonTarget_.table = inner.table;
    const std::vector<Source>& sources = bound.scope->sources;
    const Table& table = writtenTable(view, name.line, sources);
    const auto source = std::ranges::find_if(sources, [&](const Source& each) {
        return each.table == &table || (each.table == nullptr && sources.size() == 1);
    });
    const bool twice = std::ranges::count_if(
                           sources, [&](const Source& each) { return each.table == &table; }) > 1;
    if (twice) severalTables(view, name.line);
    sql::Expression number = source->table != nullptr
                                 ? rowNumberOf(*source)
                                 : numberedColumn(source->name, inner.rowNumber);
    bound.items.push_back(
        {"", BoundExpression::expression(std::move(number), {tsql::SqlType::BigInt}, false)});
    commonTarget_ = {&table, columns.size(), {}, view.name, inner.checks};
    for (const OutputColumn& column : columns)
        commonTarget_.columns.emplace_back(column.name, column.value.column);
    const std::size_t count = bound.items.size();
    with.push_back({view.name, numberedNames(count), selectOf(bound)});
    if (view.checksRows) {
        commonTarget_.checks = {rowsOutside(view, table, numberedColumn(columns.size()), with)};
    }
    return with;
}

void Binder::insertThrough(const View& view, const tsql::ObjectName& name) {
    (void)targetView(view, name);
    commonNames_.pop_back();
}

}  // namespace kap::engine
