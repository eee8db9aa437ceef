#include <algorithm>
#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

// True at brackets that hold a query, however many there are.
bool Parser::atQuery() const {
    std::size_t ahead = 0;
    while (atOperator("(", ahead))
        ++ahead;
    return ahead > 0 && atKeyword("SELECT", ahead);
}

QueryPtr Parser::bracketedQuery() {
    expectOperator("(");
    QueryPtr result = query();
    expectOperator(")");
    return result;
}

QueryPtr Parser::query() {
    const Level level(*this);
    const int outerDeepest = std::exchange(deepest_, 0);
    auto result = std::make_unique<Query>();
    result->line = peek().line;
    result->terms.push_back(queryTerm());
    while (atKeyword("UNION") || atKeyword("EXCEPT") || atKeyword("INTERSECT")) {
        if (!acceptKeyword("UNION")) refuse(peek().text);
        const SetOperator joinedBy =
            acceptKeyword("ALL") ? SetOperator::UnionAll : SetOperator::Union;
        result->terms.push_back(queryTerm());
        result->terms.back().joinedBy = joinedBy;
    }
    if (acceptKeyword("ORDER")) {
        expectKeyword("BY");
        result->orderBy = orderItems();
    }
    refuseQueryEnding();
    if (deepest_ >= kMaxNesting) throw nestedTooDeeply(result->line);
    result->depth = deepest_ + 1;
    deepest_ = std::max(outerDeepest, result->depth);
    return result;
}

QueryTerm Parser::queryTerm() {
    const int line = peek().line;
    if (atQuery()) return {bracketedQuery(), SetOperator::Union, line};
    return {select(), SetOperator::Union, line};
}

void Parser::refuseQueryEnding() const {
    refuseKeyword("OPTION", "OPTION");
    refuseKeyword("COMPUTE", "COMPUTE");
    if (atKeyword("FOR")) refuse("FOR " + peek(1).text);
    refuseKeyword("OFFSET", "OFFSET");
}

Select Parser::select() {
    Select result;
    expectKeyword("SELECT");
    result.distinct = acceptKeyword("DISTINCT");
    if (!result.distinct) acceptKeyword("ALL");
    if (atKeyword("TOP")) result.top = topClause();
    do {
        result.items.push_back(selectItem());
    } while (acceptOperator(","));
    refuseKeyword("INTO", "SELECT INTO");
    selectTail(result);
    return result;
}

void Parser::selectTail(Select& select) {
    if (atKeyword("FROM")) select.from = fromClause();
    if (acceptKeyword("WHERE")) select.where = condition();
    if (acceptKeyword("GROUP")) {
        expectKeyword("BY");
        refuseKeyword("ALL", "GROUP BY ALL");
        select.groupBy = valueList();
        if (atKeyword("WITH")) refuse("WITH " + peek(1).text);
    }
    if (acceptKeyword("HAVING")) select.having = condition();
}

TopClause Parser::topClause() {
    TopClause result;
    expectKeyword("TOP");
    if (acceptOperator("(")) {
        result.count = value();
        expectOperator(")");
    } else if (peek().kind == TokenKind::Integer) {
        result.count = literal(LiteralKind::Integer);
    } else if (peek().kind == TokenKind::Decimal) {
        result.count = literal(LiteralKind::Decimal);
    } else if (peek().kind == TokenKind::Float) {
        result.count = literal(LiteralKind::Float);
    } else {
        unexpected();
    }
    result.percent = acceptKeyword("PERCENT");
    if (atKeyword("WITH") && atKeyword("TIES", 1)) refuse("WITH TIES");
    return result;
}

SelectItem Parser::selectItem() {
    const int line = peek().line;
    if (acceptOperator("*")) return {StarItem{}, line};
    if (peek().kind == TokenKind::Variable && atOperator("=", 1)) refuse("SELECT @variable =");
    // "alias = expression" and "'alias' = expression".
    const bool namesItself = atName() || peek().kind == TokenKind::Text;
    if (namesItself && atOperator("=", 1)) {
        std::string alias = next().text;
        next();
        return {ExpressionItem{value(), std::move(alias)}, line};
    }
    if (atName() && atOperator(".", 1)) {
        const std::size_t start = position_;
        ObjectName qualifier = objectName();
        if (atOperator(".") && atOperator("*", 1)) {
            next();
            next();
            return {StarItem{std::move(qualifier)}, line};
        }
        position_ = start;
    }
    ExpressionItem item;
    item.value = value();
    item.alias = optionalItemAlias();
    return {std::move(item), line};
}

std::string Parser::optionalItemAlias() {
    const auto isText = [this] {
        return peek().kind == TokenKind::Text || peek().kind == TokenKind::NationalText;
    };
    if (acceptKeyword("AS")) return isText() ? next().text : name();
    if (isText()) return next().text;
    return atName() ? name() : std::string();
}

std::vector<OrderItem> Parser::orderItems() {
    std::vector<OrderItem> items;
    do {
        OrderItem item;
        item.value = value();
        item.descending = acceptKeyword("DESC");
        if (!item.descending) acceptKeyword("ASC");
        items.push_back(std::move(item));
    } while (acceptOperator(","));
    return items;
}

}  // namespace kap::tsql
