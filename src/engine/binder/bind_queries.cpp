#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <variant>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

using tsql::ServerError;

namespace {

// "(SELECT ...) ORDER BY x" is the query in brackets, ordered: brackets around all of it mean
// nothing.
const tsql::Query& withoutBrackets(const tsql::Query& query) {
    const tsql::Query* inner = &query;
    while (inner->terms.size() == 1) {
        const auto* bracketed = std::get_if<tsql::QueryPtr>(&inner->terms.front().node);
        if (bracketed == nullptr || !(*bracketed)->orderBy.empty()) break;
        inner = bracketed->get();
    }
    return *inner;
}

bool hasTop(const tsql::Query& query) {
    const auto* select =
        query.terms.size() == 1 ? std::get_if<tsql::Select>(&query.terms.front().node) : nullptr;
    return select != nullptr && select->top.has_value();
}

}  // namespace

BoundQuery Binder::query(const tsql::Query& query, Scope* outer, QueryPlace place) {
    tsql::requireStack(query.line);
    if (outer != nullptr && outer->subqueriesRefused) {
        throw ServerError(tsql::Message::SubqueryNotAllowed, {}, query.line);
    }
    readsOtherRows_ = readsOtherRows_ || outer != nullptr;
    const Restored numbers(needsRowNumbers_, false);
    const Restored deeper(queryDepth_, queryDepth_ + 1);
    if (!query.commonTables.empty()) limitRecursion(query.maxRecursion);
    const int aside = std::exchange(deepestRead_, 0);
    std::vector<sql::CommonTable> with = commonTables(query.commonTables, outer);
    BoundQuery bound = body(query, outer, place);
    bound.tree.with = std::move(with);
    limitRows(query, outer, bound);
    if (query.asText) bound = rowsAsText(query, std::move(bound), place);
    const int depth = checkedDepth(deepestRead_ + 1, query.line);
    deepestRead_ = std::max(aside, depth);
    return bound;
}

// Views and common tables nest queries further than their texts show. SQLite follows them by
// recursion.
int Binder::checkedDepth(int depth, int line) {
    if (depth > tsql::kMaxQueries) throw tsql::nestedTooDeeply(line);
    constexpr std::size_t kLevel = 1024;
    if (stackLeft() < kStackReserve + static_cast<std::size_t>(depth) * kLevel) {
        throw tsql::outOfStack(line);
    }
    return depth;
}

BoundQuery Binder::body(const tsql::Query& query, Scope* outer, QueryPlace place) {
    const std::vector<tsql::OrderItem>& orderBy = query.orderBy;
    const tsql::Query& body = withoutBrackets(query);
    const bool ordered =
        place == QueryPlace::Nested && !orderBy.empty() && !query.offset && !query.asText;
    if (ordered && !hasTop(body)) {
        throw ServerError(tsql::Message::OrderByWithoutTop, {}, query.line);
    }
    if (query.offset && hasTop(body)) {
        throw ServerError(tsql::Message::TopWithOffset, {}, query.line);
    }
    if (body.terms.size() > 1) return unionQuery(body, orderBy, outer);
    BoundSelect bound = term(body.terms.front(), orderBy, outer);
    orderRows(orderBy, bound);
    BoundQuery result{{selectOf(bound)}, {}};
    if (query.asText) result.origins = originsOf(bound.items, *bound.scope);
    result.columns = std::move(bound.items);
    return result;
}

// The rows are put in order first, with every column that a value could name, and the values are
// computed outside, where SQLite asks for them row by row: it would compute them before it sorts.
BoundQuery Binder::valuesInOrder(const tsql::Query& query) {
    const auto* select = std::get_if<tsql::Select>(&withoutBrackets(query).terms.front().node);
    const bool byPosition = std::ranges::any_of(query.orderBy, [](const tsql::OrderItem& item) {
        return std::holds_alternative<tsql::Literal>(item.value->node);
    });
    std::vector<sql::CommonTable> with = commonTables(query.commonTables, nullptr);
    BoundSelect rows = term(withoutBrackets(query).terms.front(), query.orderBy, nullptr);
    const bool plain = select != nullptr && withoutBrackets(query).terms.size() == 1 &&
                       !rows.grouped && !rows.tree.distinct && !rows.ranked && !byPosition &&
                       !rows.scope->sources.empty();
    if (!plain) {
        throw tsql::unsupported("SELECT @variable = @variable + ... of groups with ORDER BY",
                                query.line);
    }
    orderRows(query.orderBy, rows);
    rows.items.clear();
    Scope outside;
    outside.sources = rows.scope->sources;
    for (Source& source : outside.sources) {
        for (SourceColumn& column : source.columns) {
            sql::Expression own = numberedColumn(rows.items.size());
            rows.items.push_back({"", column.value});
            column.value = BoundExpression::expression(std::move(own), column.value.type, true);
        }
    }
    BoundQuery result;
    result.columns = itemValues(select->items, outside);
    sql::Select values;
    for (std::size_t i = 0; i < result.columns.size(); ++i) {
        values.items.push_back(numberedItem(result.columns[i].value.tree, i));
    }
    // A part with OFFSET is never merged into the whole, so it stays sorted first.
    sql::Select sorted = selectOf(rows);
    if (!sorted.limit) sorted.limit = sql::number(-1);
    sorted.offset = sql::number(0);
    values.from = sql::from(sql::Derived{std::move(sorted)});
    result.tree = {std::move(values), std::move(with)};
    return result;
}

// Where SQLite cannot order or limit rows by what they are made of, it can by what a query brings.
//
// TOP n WITH TIES takes the rows whose rank is at most n; where n depends on the number of rows,
// their own numbers are compared with it. ORDER BY may not name columns of a query around.
sql::Select Binder::nestedSelect(BoundSelect& select) {
    if (select.ties && select.keys.empty()) {
        throw ServerError(tsql::Message::TiesWithoutOrder);
    }
    sql::Select around;
    sql::Select rows = std::move(select.tree);
    rows.order.clear();
    const sql::Expression most = std::exchange(rows.limit, {});
    for (std::size_t i = 0; i < select.items.size(); ++i) {
        around.items.push_back({numberedColumn(i), ""});
        rows.items.push_back(numberedItem(collated(select.items[i].value), i));
    }
    std::vector<sql::OrderTerm> order = orderedBy(select, rows.items);
    if (!select.ranked) {
        around.from = sql::from(sql::Derived{std::move(rows)});
        around.order = std::move(order);
        around.limit = most;
        return around;
    }
    sql::Window window;
    window.order = std::move(order);
    sql::Select ranked;
    ranked.items.push_back({sql::Star(), ""});
    ranked.items.push_back(
        {sql::Over{sql::call(select.ties ? fn::kRank : fn::kRowNumber), std::move(window)},
         "rank"});
    ranked.items.push_back({most, "most"});
    ranked.from = sql::from(sql::Derived{std::move(rows)});
    around.from = sql::from(sql::Derived{std::move(ranked)});
    around.where =
        sql::Binary{sql::BinaryOperator::LessOrEqual, sql::column("rank"), sql::column("most")};
    around.order.push_back({sql::column("rank"), false});
    return around;
}

namespace {

using QueryBody = decltype(sql::Query::body);

void limitBody(QueryBody& body, sql::Expression offset, sql::Expression most) {
    const auto set = [&](auto& rows) {
        rows.limit = std::move(most);
        rows.offset = std::move(offset);
    };
    if (auto* select = std::get_if<sql::Select>(&body)) {
        set(*select);
    } else {
        set(std::get<sql::Compound>(body));
    }
}

// SQLite's LIMIT reads no columns: the rows, put in order first, are numbered. A part with OFFSET
// is never merged into the whole, so it stays sorted.
sql::Select numberedBetween(QueryBody rows, std::size_t columns, sql::Expression offset,
                            sql::Expression most) {
    limitBody(rows, sql::number(0), sql::number(-1));
    sql::Select numbered;
    numbered.items.push_back({sql::Star(), ""});
    numbered.items.push_back({sql::Over{sql::call(fn::kRowNumber), sql::Window()}, "rank"});
    numbered.items.push_back({std::move(offset), "passed"});
    numbered.items.push_back({std::move(most), "most"});
    numbered.from = sql::from(sql::Derived{sql::Query{std::move(rows)}});
    sql::Select result;
    for (std::size_t i = 0; i < columns; ++i)
        result.items.push_back({numberedColumn(i), ""});
    result.from = sql::from(sql::Derived{std::move(numbered)});
    const sql::Expression behind =
        sql::Binary{sql::BinaryOperator::Subtract, sql::column("rank"), sql::column("passed")};
    result.where =
        sql::allOf({sql::Binary{sql::BinaryOperator::Greater, behind, sql::number(0)},
                    sql::Binary{sql::BinaryOperator::LessOrEqual, behind, sql::column("most")}});
    result.order.push_back({sql::column("rank"), false});
    return result;
}

}  // namespace

// OFFSET n ROWS FETCH NEXT m ROWS ONLY.
void Binder::limitRows(const tsql::Query& query, Scope* outer, BoundQuery& bound) {
    if (!query.offset) return;
    // Columns of the query itself are out of sight.
    Scope own;
    own.outer = outer;
    Scope constants;
    constants.outer = &own;
    constants.limitsRows = true;
    constants.limitReadsOuter = true;
    const auto count = [&](const fn::Function& function, const tsql::Expression& expression) {
        const BoundExpression value = this->value(expression, constants);
        return sql::call(function, convertTo(value, {tsql::SqlType::BigInt}, expression.line).tree);
    };
    sql::Expression offset = count(fn::kOffset, *query.offset);
    sql::Expression most = query.fetch ? count(fn::kFetch, *query.fetch) : sql::number(-1);
    if (constants.readsOuter) {
        if (!query.fetch) most = sql::number(std::numeric_limits<std::int64_t>::max());
        bound.tree.body = numberedBetween(std::move(bound.tree.body), bound.columns.size(),
                                          std::move(offset), std::move(most));
        return;
    }
    limitBody(bound.tree.body, std::move(offset), std::move(most));
}

Binder::BoundSelect Binder::term(const tsql::QueryTerm& term,
                                 const std::vector<tsql::OrderItem>& orderBy, Scope* outer) {
    if (const auto* plain = std::get_if<tsql::Select>(&term.node)) {
        return select(*plain, orderBy, outer, term.line);
    }
    const tsql::Query& bracketed = *std::get<tsql::QueryPtr>(term.node);
    const bool plainBrackets = bracketed.terms.size() == 1 && bracketed.orderBy.empty() &&
                               bracketed.commonTables.empty() && !bracketed.offset;
    if (plainBrackets) return this->term(bracketed.terms.front(), orderBy, outer);
    // A bracketed query is read from as from a table of its columns.
    BoundQuery inner = query(bracketed, outer, QueryPlace::Nested);
    BoundSelect bound;
    bound.scope = std::make_unique<Scope>();
    bound.scope->outer = outer;
    bound.items = std::move(inner.columns);
    for (std::size_t i = 0; i < bound.items.size(); ++i) {
        bound.items[i].value = bound.items[i].value.readBy(numberedColumn(i));
    }
    bound.tree.from = sql::from(sql::Derived{std::move(inner.tree)});
    return bound;
}

sql::Select Binder::selectOf(BoundSelect& select) {
    const bool ranks = select.ranked && select.tree.limit;
    if (ranks || select.ordersByOuter) return nestedSelect(select);
    sql::Select result = std::move(select.tree);
    result.items.reserve(select.items.size());
    for (std::size_t i = 0; i < select.items.size(); ++i) {
        result.items.push_back(numberedItem(collated(select.items[i].value), i));
    }
    return result;
}

void Binder::checkOwnNames(const std::vector<OutputColumn>& columns, const std::string& alias,
                           int line) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].name.empty()) {
            throw ServerError(tsql::Message::ColumnWithoutName,
                              {plain::text(static_cast<std::int64_t>(i) + 1), alias}, line);
        }
        const bool repeated = std::any_of(
            columns.begin(), columns.begin() + static_cast<std::ptrdiff_t>(i),
            [&](const OutputColumn& other) { return sameName(other.name, columns[i].name); });
        if (repeated) {
            throw ServerError(tsql::Message::ColumnNamedTwice, {columns[i].name, alias}, line);
        }
    }
}

}  // namespace kap::engine
