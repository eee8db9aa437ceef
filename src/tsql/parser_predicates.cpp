#include <algorithm>
#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

ExpressionPtr Parser::predicate(Place place) {
    // !< and !> are "not less" and "not greater".
    static constexpr std::pair<std::string_view, ComparisonOperator> kComparisons[] = {
        {"=", ComparisonOperator::Equal},           {"<>", ComparisonOperator::NotEqual},
        {"!=", ComparisonOperator::NotEqual},       {"<", ComparisonOperator::Less},
        {"<=", ComparisonOperator::LessOrEqual},    {"!>", ComparisonOperator::LessOrEqual},
        {">", ComparisonOperator::Greater},         {">=", ComparisonOperator::GreaterOrEqual},
        {"!<", ComparisonOperator::GreaterOrEqual},
    };
    if (place == Place::Condition && atKeyword("EXISTS")) return existsPredicate();
    // IF UPDATE(column), in a trigger, is a condition of its own.
    if (place == Place::Condition && atKeyword("UPDATE")) {
        const int line = peek().line;
        ExpressionPtr call = wordExpression();
        ExpressionPtr one = make(Literal{LiteralKind::Integer, "1"}, line);
        return make(Comparison{ComparisonOperator::Equal, std::move(call), std::move(one)}, line,
                    1);
    }
    if (place == Place::Condition) refuseServersPredicate();
    ExpressionPtr left = sum(place);
    if (place == Place::Value || left->isPredicate()) return left;
    if (atOperator("*=")) return oldOuterJoin(std::move(left), OldOuterJoin::KeepsLeft);
    for (const auto& [symbol, op] : kComparisons) {
        if (atOperator(symbol)) return comparison(std::move(left), op);
    }
    if (atKeyword("IS")) return nullPredicate(std::move(left));
    return negatablePredicate(std::move(left));
}

// a.x *= b.x and a.x =* b.x: outer joins as they were written once.
ExpressionPtr Parser::oldOuterJoin(ExpressionPtr left, OldOuterJoin outer) {
    requireOldOuterJoins();
    const int line = next().line;
    ++oldJoins_;
    ExpressionPtr right = value();
    const int below = std::max(left->depth, right->depth);
    return make(Comparison{ComparisonOperator::Equal, std::move(left), std::move(right), outer},
                line, below);
}

ExpressionPtr Parser::comparison(ExpressionPtr left, ComparisonOperator op) {
    const int line = next().line;
    if (op == ComparisonOperator::Equal && atOperator("*")) {
        return oldOuterJoin(std::move(left), OldOuterJoin::KeepsRight);
    }
    if (atKeyword("ANY") || atKeyword("SOME") || atKeyword("ALL")) {
        return quantified(std::move(left), op, line);
    }
    ExpressionPtr right = value();
    const int below = std::max(left->depth, right->depth);
    return make(Comparison{op, std::move(left), std::move(right)}, line, below);
}

ExpressionPtr Parser::quantified(ExpressionPtr left, ComparisonOperator op, int line) {
    QuantifiedComparison result{op, std::move(left), nullptr, atKeyword("ALL")};
    next();
    if (!atQuery()) unexpected();
    result.query = bracketedQuery();
    const int below = std::max(result.value->depth, result.query->depth);
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::negatablePredicate(ExpressionPtr left) {
    const std::size_t ahead = atKeyword("NOT") ? 1 : 0;
    const bool negated = ahead == 1;
    if (!atKeyword("BETWEEN", ahead) && !atKeyword("IN", ahead) && !atKeyword("LIKE", ahead)) {
        return left;
    }
    if (negated) next();
    if (atKeyword("BETWEEN")) return betweenPredicate(std::move(left), negated);
    if (atKeyword("IN")) return inPredicate(std::move(left), negated);
    return likePredicate(std::move(left), negated);
}

ExpressionPtr Parser::betweenPredicate(ExpressionPtr left, bool negated) {
    const int line = next().line;
    BetweenPredicate result{std::move(left), nullptr, nullptr, negated};
    result.low = value();
    expectKeyword("AND");
    result.high = value();
    const int below = std::max({result.value->depth, result.low->depth, result.high->depth});
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::inPredicate(ExpressionPtr left, bool negated) {
    const int line = next().line;
    InPredicate result{std::move(left), {}, nullptr, negated};
    if (atQuery()) {
        result.query = bracketedQuery();
    } else {
        expectOperator("(");
        result.list = valueList();
        expectOperator(")");
    }
    const int below = std::max(
        {result.value->depth, deepest(result.list), result.query ? result.query->depth : 0});
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::likePredicate(ExpressionPtr left, bool negated) {
    const int line = next().line;
    LikePredicate result{std::move(left), nullptr, nullptr, negated};
    result.pattern = value();
    if (acceptKeyword("ESCAPE")) result.escape = value();
    const int below = std::max(
        {result.value->depth, result.pattern->depth, result.escape ? result.escape->depth : 0});
    return make(std::move(result), line, below);
}

ExpressionPtr Parser::nullPredicate(ExpressionPtr left) {
    const int line = next().line;
    const bool negated = acceptKeyword("NOT");
    if (atKeyword("DISTINCT") && atKeyword("FROM", 1)) refuse("IS DISTINCT FROM");
    expectKeyword("NULL");
    const int below = left->depth;
    return make(NullPredicate{std::move(left), negated}, line, below);
}

ExpressionPtr Parser::existsPredicate() {
    const int line = next().line;
    if (!atQuery()) {
        expectOperator("(");
        unexpected();
    }
    QueryPtr inner = bracketedQuery();
    const int below = inner->depth;
    return make(ExistsPredicate{std::move(inner)}, line, below);
}

}  // namespace kap::tsql
