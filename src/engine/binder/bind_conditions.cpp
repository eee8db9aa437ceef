#include <span>

#include "engine/binder/binder.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

using tsql::ServerError;

namespace {

// Halves joined again and again: SQLite counts the depth of a condition, and a flat chain would be
// a deep one.
std::string balanced(std::span<const std::string> parts, const char* joint) {
    if (parts.size() == 1) return parts.front();
    const std::size_t half = parts.size() / 2;
    return "(" + balanced(parts.first(half), joint) + joint + balanced(parts.subspan(half), joint) +
           ")";
}

std::string notIf(bool negated) {
    return negated ? " NOT" : "";
}

}  // namespace

std::string Binder::condition(const tsql::Expression& expression, Scope& scope) {
    tsql::requireStack(expression.line);
    return std::visit([&](const auto& kind) { return test(kind, expression.line, scope); },
                      expression.node);
}

// What yields a value tests nothing: the grammar keeps values out of condition places.
template <typename Value>
std::string Binder::test(const Value& /*node*/, int line, Scope& /*scope*/) {
    throw ServerError(tsql::Message::NoCondition, {}, line);
}

std::string Binder::test(const tsql::UnaryExpression& node, int /*line*/, Scope& scope) {
    return "(NOT " + condition(*node.operand, scope) + ")";
}

std::string Binder::test(const tsql::Comparison& node, int line, Scope& scope) {
    const BoundExpression left = value(*node.left, scope);
    const BoundExpression right = value(*node.right, scope);
    return compared(node.op, left, right, line, writtenLiteral(*node.left),
                    writtenLiteral(*node.right));
}

std::string Binder::test(const tsql::LogicalExpression& node, int /*line*/, Scope& scope) {
    std::vector<std::string> parts;
    parts.reserve(node.operands.size());
    for (const auto& operand : node.operands)
        parts.push_back(condition(*operand, scope));
    return balanced(parts, node.op == tsql::LogicalOperator::And ? " AND " : " OR ");
}

std::string Binder::test(const tsql::BetweenPredicate& node, int line, Scope& scope) {
    const std::vector<BoundExpression> written{value(*node.value, scope), value(*node.low, scope),
                                               value(*node.high, scope)};
    const std::vector<BoundExpression> values = comparable(written, "between", line);
    const auto limit = [&](std::size_t at, const tsql::Expression& expression) {
        if (values[0].constant) return collated(values[at], values[at].sql);
        const ConstantSource source = comparedSource(writtenLiteral(expression), written[at],
                                                     values[at], written[0], values[0]);
        return collated(values[at], operand(values[at], source));
    };
    return "(" + collated(values[0]) + notIf(node.negated) + " BETWEEN " + limit(1, *node.low) +
           " AND " + limit(2, *node.high) + ")";
}

// Whether some row satisfies ("> ANY"), or all do ("> ALL"); unknown when only rows that cannot be
// compared stand in the way.
std::string Binder::test(const tsql::QuantifiedComparison& node, int line, Scope& scope) {
    const BoundExpression left = value(*node.value, scope);
    const BoundQuery bound = query(*node.query, &scope, QueryPlace::Nested);
    if (bound.columns.size() != 1) {
        throw ServerError(tsql::Message::OneExpressionInSubquery, {}, line);
    }
    BoundExpression column = bound.columns[0].value;
    column.sql = "\"c1\"";
    column.constant.reset();
    column.plainColumn = false;
    const std::string rows = "SELECT " + compared(node.op, left, column, line) +
                             " AS \"holds\" FROM (" + bound.sql + ")";
    const std::string decided =
        node.all ? "min(\"holds\") = 0 THEN 0" : "max(\"holds\") = 1 THEN 1";
    return "(SELECT CASE WHEN " + decided + " WHEN count(\"holds\") < count(*) THEN NULL ELSE " +
           (node.all ? "1" : "0") + " END FROM (" + rows + "))";
}

std::string Binder::test(const tsql::InPredicate& node, int line, Scope& scope) {
    if (node.query) return inQuery(node, line, scope);
    std::vector<BoundExpression> values{value(*node.value, scope)};
    for (const auto& item : node.list)
        values.push_back(value(*item, scope));
    const std::vector<BoundExpression> written = values;
    values = comparable(std::move(values), "equal to", line);
    std::string list;
    for (std::size_t i = 1; i < values.size(); ++i) {
        const ConstantSource source = comparedSource(writtenLiteral(*node.list[i - 1]), written[i],
                                                     values[i], written[0], values[0]);
        list +=
            (i > 1 ? ", " : "") + (values[0].constant ? values[i].sql : operand(values[i], source));
    }
    return "(" + collated(values[0]) + notIf(node.negated) + " IN (" + list + "))";
}

// The column of the query is brought to the common type outside it, so that the query stays as it
// is.
std::string Binder::inQuery(const tsql::InPredicate& node, int line, Scope& scope) {
    const BoundExpression left = value(*node.value, scope);
    const BoundQuery bound = query(*node.query, &scope, QueryPlace::Nested);
    if (bound.columns.size() != 1) {
        throw ServerError(tsql::Message::OneExpressionInSubquery, {}, line);
    }
    BoundExpression column = bound.columns[0].value;
    column.sql = "\"c1\"";
    column.constant.reset();
    column.plainColumn = false;
    const std::vector<BoundExpression> sides = comparable({left, column}, "equal to", line);
    const std::string rows = sides[1].sql == column.sql
                                 ? bound.sql
                                 : "SELECT " + sides[1].sql + " FROM (" + bound.sql + ")";
    return "(" + collated(sides[0]) + notIf(node.negated) + " IN (" + rows + "))";
}

std::string Binder::test(const tsql::LikePredicate& node, int line, Scope& scope) {
    const auto text = [&](const tsql::Expression& expression) {
        BoundExpression bound = value(expression, scope);
        if (tsql::isText(bound.type.type)) return bound;
        return castTo(bound, textTypeOf(bound.type), 0, line);
    };
    const BoundExpression tested = text(*node.value);
    const BoundExpression pattern = text(*node.pattern);
    const ConstantSource source =
        comparedSource(writtenLiteral(*node.pattern), pattern, pattern, tested, tested);
    std::string call = "kap_like(" + tested.sql + ", " + operand(pattern, source);
    if (node.escape) call += ", " + text(*node.escape).sql;
    call += ")";
    return node.negated ? "(NOT " + call + ")" : call;
}

std::string Binder::test(const tsql::NullPredicate& node, int /*line*/, Scope& scope) {
    return "(" + value(*node.value, scope).sql + " IS" + notIf(node.negated) + " NULL)";
}

std::string Binder::test(const tsql::ExistsPredicate& node, int /*line*/, Scope& scope) {
    return "EXISTS (" + query(*node.query, &scope, QueryPlace::Nested).sql + ")";
}

}  // namespace kap::engine
