#include <algorithm>
#include <utility>

#include "base/restored.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

// True at brackets that hold a query and nothing else, however many there are. What follows the end
// of inner brackets tells: "((SELECT 1) UNION SELECT 2)" is a query, "((SELECT 1) + 1)" a value,
// and "((SELECT 1 AS a) AS x JOIN t ON 1 = 1)" a joined source.
bool Parser::atQuery() const {
    constexpr std::size_t kMost = kMaxNesting;
    std::size_t ahead = 0;
    while (ahead <= kMost && atOperator("(", ahead))
        ++ahead;
    if (ahead > kMost) throw nestedTooDeeply(peek().line);
    if (ahead == 0 || !atKeyword("SELECT", ahead)) return false;
    std::size_t open = ahead;
    for (std::size_t level = ahead; level > 1; ++ahead) {
        if (peek(ahead).kind == TokenKind::End) return true;
        if (atOperator("(", ahead)) ++open;
        if (!atOperator(")", ahead) || --open >= level) continue;
        --level;
        const std::size_t behind = ahead + 1;
        const bool goesOn = atOperator(")", behind) || atKeyword("UNION", behind) ||
                            atKeyword("EXCEPT", behind) || atKeyword("INTERSECT", behind) ||
                            atKeyword("ORDER", behind);
        if (!goesOn) return false;
    }
    return true;
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
    const Restored inner(queries_, queries_ + 1);
    const std::size_t draws = draws_;
    const std::size_t unordered = unorderedDraws_;
    auto result = std::make_unique<Query>();
    result->line = peek().line;
    result->commonTables = commonTables();
    result->terms.push_back(intersection());
    while (atKeyword("UNION") || atKeyword("EXCEPT")) {
        SetOperator joinedBy = SetOperator::Except;
        if (acceptKeyword("UNION")) {
            joinedBy = acceptKeyword("ALL") ? SetOperator::UnionAll : SetOperator::Union;
        } else {
            next();
        }
        result->terms.push_back(intersection());
        result->terms.back().joinedBy = joinedBy;
    }
    if (acceptKeyword("ORDER")) {
        expectKeyword("BY");
        const std::size_t where = result->terms.size() == 1 ? allGroupsWhere_ : 0;
        result->orderBy = orderItems();
        for (OrderItem& item : result->orderBy) {
            if (where != 0) filterAggregates(item.value, where);
        }
    }
    queryEnding(*result);
    if (draws_ != draws) refuseDraws(*result, draws, unordered);
    if (deepest_ >= kMaxNesting) throw nestedTooDeeply(result->line);
    result->depth = deepest_ + 1;
    deepest_ = std::max(outerDeepest, result->depth);
    return result;
}

// WITH a AS (query), b AS (query).
std::vector<CommonTable> Parser::commonTables() {
    std::vector<CommonTable> result;
    if (!acceptKeyword("WITH")) return result;
    if (atKeyword("XMLNAMESPACES") && atOperator("(", 1)) refuse("WITH XMLNAMESPACES");
    do {
        CommonTable& table = result.emplace_back();
        table.name = name();
        if (atOperator("(")) table.columns = nameList();
        expectKeyword("AS");
        table.query = bracketedQuery();
    } while (acceptOperator(","));
    return result;
}

// INTERSECT binds tighter than UNION and EXCEPT: terms joined by it are one term.
QueryTerm Parser::intersection() {
    QueryTerm first = queryTerm();
    if (!atKeyword("INTERSECT")) return first;
    const int line = first.line;
    auto joined = std::make_unique<Query>();
    joined->line = line;
    joined->terms.push_back(std::move(first));
    while (acceptKeyword("INTERSECT")) {
        joined->terms.push_back(queryTerm());
        joined->terms.back().joinedBy = SetOperator::Intersect;
    }
    joined->depth = deepest_ + 1;
    return {std::move(joined), SetOperator::Union, line};
}

QueryTerm Parser::queryTerm() {
    const int line = peek().line;
    if (atQuery()) return {bracketedQuery(), SetOperator::Union, line};
    return {select(), SetOperator::Union, line};
}

void Parser::queryEnding(Query& query) {
    rowLimits(query);
    refuseKeyword("COMPUTE", "COMPUTE");
    // DECLARE c CURSOR FOR query FOR UPDATE is the cursor's own.
    if (atRowsAsText()) {
        query.asText = rowsAsText();
        checkRowsAsText(query);
    } else if (atKeyword("FOR") && !atKeyword("UPDATE", 1) && !atKeyword("READ", 1)) {
        refuse("FOR " + peek(1).text);
    }
    query.maxRecursion = queryHints();
}

void Parser::rowLimits(Query& query) {
    if (!acceptKeyword("OFFSET")) return;
    if (query.orderBy.empty()) throw syntaxError("OFFSET", peek().line);
    query.offset = value();
    if (!acceptKeyword("ROWS")) expectKeyword("ROW");
    if (!acceptKeyword("FETCH")) return;
    if (!acceptKeyword("NEXT")) expectKeyword("FIRST");
    query.fetch = value();
    if (!acceptKeyword("ROWS")) expectKeyword("ROW");
    expectKeyword("ONLY");
}

Select Parser::select() {
    Select result;
    expectKeyword("SELECT");
    result.distinct = acceptKeyword("DISTINCT");
    if (!result.distinct) acceptKeyword("ALL");
    const std::size_t before = draws_;
    if (atKeyword("TOP")) result.top = topClause();
    refuseDraws(before, Message::DrawInClause);
    do {
        result.items.push_back(selectItem());
    } while (acceptOperator(","));
    if (acceptKeyword("INTO")) result.into = objectName();
    const std::size_t drawn = draws_;
    selectTail(result);
    refuseDraws(drawn, Message::DrawInClause);
    return result;
}

void Parser::selectTail(Select& select) {
    if (atKeyword("FROM")) select.from = fromClause();
    std::size_t where = 0;
    if (acceptKeyword("WHERE")) {
        where = position_;
        const int joins = oldJoins_;
        select.where = condition();
        if (oldJoins_ != joins) joinOldWay(select);
    }
    allGroups_ = false;
    if (acceptKeyword("GROUP")) groupByClause(select);
    const bool all = allGroups_ && select.where != nullptr;
    if (acceptKeyword("HAVING")) select.having = condition();
    if (all) groupAll(select, where);
    allGroupsWhere_ = all ? where : 0;
}

TopClause Parser::topClause() {
    TopClause result;
    expectKeyword("TOP");
    if (atQuery()) {
        result.count = bracketed(Place::Value);
    } else if (acceptOperator("(")) {
        result.count = value();
        expectOperator(")");
    } else if (peek().kind == TokenKind::Integer) {
        result.count = literal(LiteralKind::Integer);
    } else if (peek().kind == TokenKind::Decimal) {
        result.count = literal(LiteralKind::Decimal);
    } else if (peek().kind == TokenKind::Float) {
        result.count = literal(LiteralKind::Float);
    } else if (peek().kind == TokenKind::Variable || peek().kind == TokenKind::Parameter) {
        result.count = primary(Place::Value);
    } else {
        unexpected();
    }
    result.percent = acceptKeyword("PERCENT");
    if (atKeyword("WITH") && atKeyword("TIES", 1)) {
        next();
        next();
        result.withTies = true;
    }
    return result;
}

SelectItem Parser::selectItem() {
    const int line = peek().line;
    if (acceptOperator("*")) return {StarItem{}, line};
    if (peek().kind == TokenKind::Variable && peek(1).kind == TokenKind::Operator &&
        peek(1).text.back() == '=' && peek(1).text != "<=" && peek(1).text != ">=" &&
        peek(1).text != "!=") {
        const std::string name = variable();
        return {AssignmentItem{name, assignedValue([&] { return VariableReference{name}; })}, line};
    }
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
    return atAlias() ? name() : std::string();
}

std::vector<OrderItem> Parser::orderItems() {
    const std::size_t draws = draws_;
    std::vector<OrderItem> items;
    do {
        OrderItem item;
        item.value = value();
        item.descending = acceptKeyword("DESC");
        if (!item.descending) acceptKeyword("ASC");
        items.push_back(std::move(item));
    } while (acceptOperator(","));
    refuseDraws(draws, Message::DrawInClause);
    return items;
}

}  // namespace kap::tsql
