#include <utility>
#include <variant>

#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;
using tsql::SetOperator;

namespace {

sql::SetOperator operatorOf(SetOperator op) {
    switch (op) {
        case SetOperator::Union:
            return sql::SetOperator::Union;
        case SetOperator::UnionAll:
            return sql::SetOperator::UnionAll;
        case SetOperator::Except:
            return sql::SetOperator::Except;
        case SetOperator::Intersect:
            break;
    }
    return sql::SetOperator::Intersect;
}

sql::Select allOfQuery(sql::QueryTree query) {
    return sql::allColumns(sql::from(sql::Derived{std::move(query)}));
}

// SQLite compares rows in the order that the first term's columns have.
template <class Terms>
void orderTermsAlike(Terms& terms, std::size_t column, const BoundExpression& common) {
    for (auto& each : terms) {
        BoundExpression& value = each.items[column].value;
        if (value.collation == common.collation) continue;
        value.collation = common.collation;
        value.plainColumn = false;
    }
}

// The same word as messages have it.
const char* trimmedName(SetOperator op) {
    switch (op) {
        case SetOperator::UnionAll:
            return "UNION ALL";
        case SetOperator::Except:
            return "EXCEPT";
        case SetOperator::Intersect:
            return "INTERSECT";
        case SetOperator::Union:
            break;
    }
    return "UNION";
}

}  // namespace

BoundQuery Binder::unionQuery(const tsql::Query& query, const std::vector<tsql::OrderItem>& orderBy,
                              Scope* outer) {
    std::vector<BoundSelect> terms;
    for (const tsql::QueryTerm& each : query.terms)
        terms.push_back(term(each, {}, outer));
    std::vector<OutputColumn> columns =
        unify(terms, query.terms.size() > 1 ? query.terms[1].joinedBy : SetOperator::UnionAll,
              query.line, *this);
    sql::Compound rows = unionOf(terms, query);
    rows.order = unionOrder(orderBy, columns);
    return {sql::Query{std::move(rows)}, std::move(columns)};
}

// Brings the columns of all terms to common types; they have the names of the first term's.
std::vector<OutputColumn> Binder::unify(std::vector<BoundSelect>& terms, SetOperator joinedBy,
                                        int line, const Binder& binder) {
    for (const BoundSelect& each : terms) {
        if (each.items.size() == terms.front().items.size()) continue;
        throw ServerError(tsql::Message::UnequalTargetLists, {}, line);
    }
    std::vector<OutputColumn> columns;
    for (std::size_t i = 0; i < terms.front().items.size(); ++i) {
        std::vector<BoundExpression> values;
        values.reserve(terms.size());
        for (const BoundSelect& each : terms)
            values.push_back(each.items[i].value);
        const tsql::TypeSpec type = commonType(values).value_or(tsql::TypeSpec{tsql::SqlType::Int});
        bool nullable = false;
        for (BoundSelect& each : terms) {
            BoundExpression& value = each.items[i].value;
            value = binder.convertTo(value, type, line);
            nullable = nullable || value.nullable;
        }
        columns.push_back({terms.front().items[i].name,
                           BoundExpression::expression(numberedColumn(i), type, nullable)});
        const bool all = joinedBy == SetOperator::UnionAll;
        inheritCollation(columns.back().value, values, trimmedName(joinedBy), line);
        if (all) {
            requireCollation(columns.back().value, i + 1, line);
        } else if (columns.back().value.collation != nullptr) {
            (void)commonCollation(values, trimmedName(joinedBy), line);
        }
        orderTermsAlike(terms, i, columns.back().value);
    }
    return columns;
}

sql::Compound Binder::unionOf(std::vector<BoundSelect>& terms, const tsql::Query& query) {
    // SQLite takes five hundred at a time; what is joined so far then counts as one.
    constexpr std::size_t kMostTerms = 400;
    sql::Compound result;
    for (std::size_t i = 0; i < terms.size(); ++i) {
        if (i > 0 && i % kMostTerms == 0) {
            sql::Select before = allOfQuery(sql::Query{std::exchange(result, {})});
            result.terms.push_back({sql::SetOperator::Union, std::move(before)});
        }
        // SQLite allows LIMIT only behind the whole.
        const bool whole = !terms[i].tree.limit && !terms[i].ranked;
        sql::Select select = selectOf(terms[i]);
        if (!whole) select = allOfQuery(std::move(select));
        result.terms.push_back({operatorOf(query.terms[i].joinedBy), std::move(select)});
    }
    return result;
}

}  // namespace kap::engine
