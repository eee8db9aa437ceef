#include <algorithm>
#include <utility>

#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/row_numbers.hpp"

// Cursors through which rows may be written.
namespace kap::engine {

namespace {

// Rows that stand for several rows, or for those of a part of them, cannot be written through.
bool showsRows(const tsql::Query& query) {
    const auto* select =
        query.terms.size() == 1 ? std::get_if<tsql::Select>(&query.terms.front().node) : nullptr;
    if (select == nullptr || select->distinct || select->having || select->from.empty() ||
        !select->groupBy.empty() || query.offset) {
        return false;
    }
    return !select->top || (!select->top->percent && !select->top->withTies);
}

}  // namespace

BoundQuery Binder::cursorQuery(const tsql::Query& query, std::vector<std::string>& tables) {
    tables.clear();
    if (!showsRows(query)) return this->query(query, nullptr, QueryPlace::Whole);
    if (!query.commonTables.empty()) limitRecursion(query.maxRecursion);
    std::vector<sql::CommonTable> with = commonTables(query.commonTables, nullptr);
    const Restored numbers(needsRowNumbers_, true);
    BoundSelect bound = term(query.terms.front(), query.orderBy, nullptr);
    orderRows(query.orderBy, bound);
    for (const Source& source : bound.scope->sources) {
        if (bound.grouped || source.table == nullptr) continue;
        if (std::ranges::find(tables, source.table->name) != tables.end()) continue;
        tables.push_back(source.table->name);
        bound.items.push_back(
            {"", BoundExpression::expression(rowNumberOf(source), {tsql::SqlType::BigInt}, true)});
    }
    sql::Select select = selectOf(bound);
    return {{std::move(select), std::move(with)}, std::move(bound.items)};
}

// The session knows where the cursor stands.
sql::Expression Binder::test(const tsql::CurrentOfPredicate& node, int line, Scope& scope) {
    const Source* target =
        scope.target < scope.sources.size() ? &scope.sources[scope.target] : nullptr;
    if (target == nullptr || target->table == nullptr) {
        throw tsql::ServerError(tsql::Message::TableNotInCursor, {}, line);
    }
    sql::Call row{fn::kCurrentRow, {sql::text(node.cursor), sql::text(target->table->name)}};
    for (const std::string& column : node.columns)
        row.arguments.push_back(sql::text(column));
    return sql::Binary{sql::BinaryOperator::Equal, rowNumberOf(*target), std::move(row)};
}

}  // namespace kap::engine
