#include <utility>

#include "engine/binder/binder.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

using tsql::ServerError;

namespace {

// The only column of a query, as what is around it reads it.
BoundExpression onlyColumn(const BoundQuery& query) {
    BoundExpression column = query.columns[0].value.readBy(numberedColumn(0));
    column.plainColumn = false;
    return column;
}

}  // namespace

sql::Expression Binder::condition(const tsql::Expression& expression, Scope& scope) {
    tsql::requireStack(expression.line);
    return std::visit([&](const auto& kind) { return test(kind, expression.line, scope); },
                      expression.node);
}

// What yields a value tests nothing: the grammar keeps values out of condition places.
template <typename Value>
sql::Expression Binder::test(const Value& /*node*/, int line, Scope& /*scope*/) {
    throw ServerError(tsql::Message::NoCondition, {}, line);
}

sql::Expression Binder::test(const tsql::UnaryExpression& node, int /*line*/, Scope& scope) {
    return sql::negation(condition(*node.operand, scope));
}

sql::Expression Binder::test(const tsql::Comparison& node, int line, Scope& scope) {
    if (node.outer != tsql::OldOuterJoin::None) throw tsql::unsupported("*= within OR", line);
    const BoundExpression left = value(*node.left, scope);
    const BoundExpression right = value(*node.right, scope);
    return compared(node.op, left, right, line, writtenLiteral(*node.left),
                    writtenLiteral(*node.right));
}

sql::Expression Binder::test(const tsql::LogicalExpression& node, int /*line*/, Scope& scope) {
    const bool both = node.op == tsql::LogicalOperator::And;
    sql::Chain result{both ? sql::ChainOperator::And : sql::ChainOperator::Or, {}};
    result.parts.reserve(node.operands.size());
    for (const auto& operand : node.operands)
        result.parts.push_back(condition(*operand, scope));
    return result;
}

sql::Expression Binder::test(const tsql::BetweenPredicate& node, int line, Scope& scope) {
    const std::vector<BoundExpression> written{value(*node.value, scope), value(*node.low, scope),
                                               value(*node.high, scope)};
    const std::vector<BoundExpression> values = comparable(written, "between", line);
    const auto limit = [&](std::size_t at, const tsql::Expression& expression) {
        if (values[0].constant() != nullptr) return collated(values[at], values[at].tree);
        const ConstantSource source = comparedSource(writtenLiteral(expression), written[at],
                                                     values[at], written[0], values[0]);
        return collated(values[at], operand(values[at], source));
    };
    sql::Expression low = limit(1, *node.low);
    sql::Expression high = limit(2, *node.high);
    return sql::Between{collated(values[0]), std::move(low), std::move(high), node.negated};
}

// Whether some row satisfies ("> ANY"), or all do ("> ALL"); unknown when only rows that cannot be
// compared stand in the way.
sql::Expression Binder::test(const tsql::QuantifiedComparison& node, int line, Scope& scope) {
    const BoundExpression left = value(*node.value, scope);
    BoundQuery bound = query(*node.query, &scope, QueryPlace::Nested);
    if (bound.columns.size() != 1) {
        throw ServerError(tsql::Message::OneExpressionInSubquery, {}, line);
    }
    const sql::Expression holds = sql::column("holds");
    sql::Select rows;
    rows.items.push_back({compared(node.op, left, onlyColumn(bound), line), "holds"});
    rows.from = sql::from(sql::Derived{std::move(bound.tree)});
    // The row that decides: one that does not hold among all, one that holds among any.
    const sql::Expression decisive = sql::number(node.all ? 0 : 1);
    const sql::Expression found = sql::call(node.all ? fn::kMin : fn::kMax, holds);
    const sql::Expression known = sql::call(fn::kCount, holds);
    sql::Case result;
    result.branches = {
        {sql::Binary{sql::BinaryOperator::Equal, found, decisive}, decisive},
        {sql::Binary{sql::BinaryOperator::Less, known, sql::call(fn::kCount, sql::Star())},
         sql::null()}};
    result.otherwise = sql::number(node.all ? 1 : 0);
    return sql::Subquery{sql::one(std::move(result), sql::from(sql::Derived{std::move(rows)}))};
}

sql::Expression Binder::test(const tsql::InPredicate& node, int line, Scope& scope) {
    if (node.query) return inQuery(node, line, scope);
    std::vector<BoundExpression> values{value(*node.value, scope)};
    for (const auto& item : node.list)
        values.push_back(value(*item, scope));
    const std::vector<BoundExpression> written = values;
    values = comparable(std::move(values), "equal to", line);
    sql::In result{collated(values[0]), {}, node.negated};
    result.list.reserve(values.size() - 1);
    const bool isConstant = values[0].constant() != nullptr;
    for (std::size_t i = 1; i < values.size(); ++i) {
        const ConstantSource source = comparedSource(writtenLiteral(*node.list[i - 1]), written[i],
                                                     values[i], written[0], values[0]);
        result.list.push_back(isConstant ? values[i].tree : operand(values[i], source));
    }
    return result;
}

// The column of the query is brought to the common type outside it, so that the query stays as it
// is.
sql::Expression Binder::inQuery(const tsql::InPredicate& node, int line, Scope& scope) {
    const BoundExpression left = value(*node.value, scope);
    BoundQuery bound = query(*node.query, &scope, QueryPlace::Nested);
    if (bound.columns.size() != 1) {
        throw ServerError(tsql::Message::OneExpressionInSubquery, {}, line);
    }
    const BoundExpression column = onlyColumn(bound);
    const std::vector<BoundExpression> sides = comparable({left, column}, "equal to", line);
    sql::QueryTree rows = std::move(bound.tree);
    if (sides[1].tree != column.tree) {
        rows = sql::one(sides[1].tree, sql::from(sql::Derived{std::move(rows)}));
    }
    return sql::InQuery{collated(sides[0]), std::move(rows), node.negated};
}

sql::Expression Binder::test(const tsql::LikePredicate& node, int line, Scope& scope) {
    const auto text = [&](const tsql::Expression& expression, const char* place) {
        BoundExpression bound = value(expression, scope);
        if (tsql::isText(bound.type.type)) return bound;
        if (tsql::isVariant(bound.type.type)) {
            throw ServerError(tsql::Message::InvalidArgumentType,
                              {tsql::typeName(bound.type.type), place, "like"}, line);
        }
        return castTo(bound, textTypeOf(bound.type), 0, line);
    };
    const BoundExpression tested = text(*node.value, "1");
    const BoundExpression pattern = text(*node.pattern, "2");
    const ConstantSource source =
        comparedSource(writtenLiteral(*node.pattern), pattern, pattern, tested, tested);
    sql::Call call{fn::kLike, {tested.tree, operand(pattern, source)}};
    if (node.escape) call.arguments.push_back(text(*node.escape, "3").tree);
    if (const auto collation = commonCollation({tested, pattern}, "like", line)) {
        call.function = fn::kLikeAs;
        call.arguments.insert(call.arguments.begin(),
                              sql::number(packMatching(collation->matching)));
    }
    return node.negated ? sql::negation(std::move(call)) : std::move(call);
}

sql::Expression Binder::test(const tsql::NullPredicate& node, int /*line*/, Scope& scope) {
    sql::Expression tested = value(*node.value, scope).tree;
    return node.negated ? sql::isNotNull(std::move(tested)) : sql::isNull(std::move(tested));
}

sql::Expression Binder::test(const tsql::ExistsPredicate& node, int /*line*/, Scope& scope) {
    return sql::Exists{query(*node.query, &scope, QueryPlace::Nested).tree};
}

}  // namespace kap::engine
