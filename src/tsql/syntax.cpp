#include "tsql/syntax.hpp"

namespace kap::tsql {

namespace {

template <typename... Kinds>
bool holdsAny(const Expression::Node& node) {
    return (std::holds_alternative<Kinds>(node) || ...);
}

}  // namespace

std::string ObjectName::text() const {
    std::string result;
    for (const std::string& part : parts) {
        if (&part != &parts.front()) result += '.';
        result += part;
    }
    return result;
}

bool Expression::isPredicate() const {
    if (const auto* unary = std::get_if<UnaryExpression>(&node)) {
        return unary->op == UnaryOperator::Not;
    }
    return holdsAny<Comparison, LogicalExpression, BetweenPredicate, QuantifiedComparison,
                    InPredicate, LikePredicate, NullPredicate, ExistsPredicate, CurrentOfPredicate>(
        node);
}

}  // namespace kap::tsql
