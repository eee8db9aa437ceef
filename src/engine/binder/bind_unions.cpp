#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;
using tsql::SetOperator;

namespace {

const char* operatorText(SetOperator op) {
    switch (op) {
        case SetOperator::Union:
            return " UNION ";
        case SetOperator::UnionAll:
            return " UNION ALL ";
        case SetOperator::Except:
            return " EXCEPT ";
        case SetOperator::Intersect:
            return " INTERSECT ";
    }
    return "";
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
    std::string sql = unionText(terms, query) + unionOrderText(orderBy, columns);
    return {std::move(sql), std::move(columns)};
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

std::string Binder::unionText(std::vector<BoundSelect>& terms, const tsql::Query& query) {
    // SQLite takes five hundred at a time; what is joined so far then counts as one.
    constexpr std::size_t kMostTerms = 400;
    std::string sql;
    for (std::size_t i = 0; i < terms.size(); ++i) {
        if (i > 0 && i % kMostTerms == 0) sql = "SELECT * FROM (" + sql + ")";
        if (i > 0) sql += operatorText(query.terms[i].joinedBy);
        const std::string text = selectText(terms[i]);
        // SQLite allows LIMIT only behind the whole.
        const bool whole = !terms[i].limit && !terms[i].ranked;
        sql += whole ? text : "SELECT * FROM (" + text + ")";
    }
    return sql;
}

}  // namespace kap::engine
