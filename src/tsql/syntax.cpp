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

// What is below in a chain, the operand of a sign or the left side of an operator, is ended next
// and not by what is around it.
void ExpressionDeleter::operator()(Expression* expression) const noexcept {
    while (expression != nullptr) {
        Expression* below = nullptr;
        if (auto* binary = std::get_if<BinaryExpression>(&expression->node)) {
            below = binary->left.release();
        } else if (auto* unary = std::get_if<UnaryExpression>(&expression->node)) {
            below = unary->operand.release();
        }
        delete expression;
        expression = below;
    }
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
