#include <algorithm>

#include "ado/embedded/translate/binder.hpp"
#include "ado/embedded/translate/type_rules.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

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
    if (outer != nullptr && outer->subqueriesRefused) {
        throw ServerError(
            1046,
            "Subqueries are not allowed in this context. Only scalar expressions are allowed.",
            query.line, 15);
    }
    const std::vector<tsql::OrderItem>& orderBy = query.orderBy;
    const tsql::Query& body = withoutBrackets(query);
    if (place == QueryPlace::Nested && !orderBy.empty() && !hasTop(body)) {
        throw ServerError(1033,
                          "The ORDER BY clause is invalid in views, inline functions, derived "
                          "tables, subqueries, "
                          "and common table expressions, unless TOP or FOR XML is also specified.",
                          query.line, 15);
    }
    if (body.terms.size() > 1) return unionQuery(body, orderBy, outer);
    BoundSelect bound = term(body.terms.front(), orderBy, outer);
    bound.order = orderText(orderBy, bound);
    std::string sql = selectText(bound);
    return {std::move(sql), std::move(bound.items)};
}

Binder::BoundSelect Binder::term(const tsql::QueryTerm& term,
                                 const std::vector<tsql::OrderItem>& orderBy, Scope* outer) {
    if (const auto* plain = std::get_if<tsql::Select>(&term.node)) {
        BoundSelect bound = select(*plain, orderBy, outer, term.line);
        if (bound.percentTop != nullptr) {
            const Typed percent = value(*bound.percentTop->count, *bound.scope);
            const std::string count = convertTo(percent, {tsql::SqlType::Float}, term.line).sql;
            bound.limit = "(SELECT " + callText("kap_top_percent", "count(*)", count) + " FROM (" +
                          selectText(bound) + "))";
        }
        return bound;
    }
    // A bracketed query is read from as from a table of its columns.
    const BoundQuery inner = query(*std::get<tsql::QueryPtr>(term.node), outer, QueryPlace::Nested);
    BoundSelect bound;
    bound.scope = std::make_unique<Scope>();
    bound.scope->outer = outer;
    bound.items = inner.columns;
    for (std::size_t i = 0; i < bound.items.size(); ++i) {
        bound.items[i].value.sql = numberedName(i);
        bound.items[i].value.constant.reset();
    }
    bound.tail = " FROM (" + inner.sql + ")";
    return bound;
}

BoundQuery Binder::unionQuery(const tsql::Query& query, const std::vector<tsql::OrderItem>& orderBy,
                              Scope* outer) {
    std::vector<BoundSelect> terms;
    for (const tsql::QueryTerm& each : query.terms) {
        terms.push_back(term(each, {}, outer));
        if (terms.back().items.size() == terms.front().items.size()) continue;
        throw ServerError(
            205,
            "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal "
            "number of expressions in their target lists.",
            query.line);
    }
    std::vector<OutputColumn> columns;
    for (std::size_t i = 0; i < terms.front().items.size(); ++i) {
        std::vector<Typed> values;
        values.reserve(terms.size());
        for (const BoundSelect& each : terms)
            values.push_back(each.items[i].value);
        const tsql::TypeSpec type = commonType(values).value_or(tsql::TypeSpec{tsql::SqlType::Int});
        bool nullable = false;
        for (BoundSelect& each : terms) {
            Typed& value = each.items[i].value;
            value = convertTo(value, type, query.line);
            nullable = nullable || value.nullable;
        }
        columns.push_back(
            {terms.front().items[i].name, Typed::expression(numberedName(i), type, nullable)});
    }
    std::string sql;
    for (std::size_t i = 0; i < terms.size(); ++i) {
        if (i > 0)
            sql +=
                query.terms[i].joinedBy == tsql::SetOperator::UnionAll ? " UNION ALL " : " UNION ";
        const std::string text = selectText(terms[i]);
        // SQLite allows LIMIT only behind the whole.
        sql += terms[i].limit.empty() ? text : "SELECT * FROM (" + text + ")";
    }
    sql += unionOrderText(orderBy, columns);
    return {std::move(sql), std::move(columns)};
}

std::string Binder::selectText(const BoundSelect& select) {
    std::string sql = select.distinct ? "SELECT DISTINCT " : "SELECT ";
    for (std::size_t i = 0; i < select.items.size(); ++i) {
        if (i > 0) sql += ", ";
        sql += collated(select.items[i].value) + " AS " + numberedName(i);
    }
    sql += select.tail + select.order;
    if (!select.limit.empty()) sql += " LIMIT " + select.limit;
    return sql;
}

void Binder::checkOwnNames(const std::vector<OutputColumn>& columns, const std::string& alias,
                           int line) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].name.empty()) {
            throw ServerError(8155,
                              "No column name was specified for column " +
                                  tsql::integerText(static_cast<std::int64_t>(i) + 1) + " of '" +
                                  alias + "'.",
                              line);
        }
        const bool repeated = std::any_of(
            columns.begin(), columns.begin() + static_cast<std::ptrdiff_t>(i),
            [&](const OutputColumn& other) { return sameName(other.name, columns[i].name); });
        if (repeated) {
            throw ServerError(8156,
                              "The column '" + columns[i].name +
                                  "' was specified multiple times for '" + alias + "'.",
                              line);
        }
    }
}

}  // namespace kap::ado::embedded
