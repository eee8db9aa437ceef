#include <algorithm>

#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

namespace {

bool contains(const tsql::ExpressionPtr& expression) {
    return expression != nullptr && containsAggregate(*expression);
}

bool contains(const std::vector<tsql::ExpressionPtr>& expressions) {
    return std::any_of(expressions.begin(), expressions.end(),
                       [](const tsql::ExpressionPtr& expression) { return contains(expression); });
}

bool inWindow(const tsql::Window& window) {
    return contains(window.partitionBy) ||
           std::any_of(window.orderBy.begin(), window.orderBy.end(),
                       [](const tsql::OrderItem& item) { return contains(item.value); });
}

// Looks into every kind of expression but subqueries, whose aggregates are their own.
struct Search {
    bool operator()(const tsql::Literal&) const { return false; }
    bool operator()(const tsql::ColumnReference&) const { return false; }
    bool operator()(const tsql::VariableReference&) const { return false; }
    bool operator()(const tsql::ExistsPredicate&) const { return false; }
    bool operator()(const tsql::ScalarSubquery&) const { return false; }
    bool operator()(const tsql::DefaultArgument&) const { return false; }
    bool operator()(const tsql::CurrentOfPredicate&) const { return false; }
    bool operator()(const tsql::UnaryExpression& e) const { return contains(e.operand); }
    // A long chain is deep on its left side.
    bool operator()(const tsql::BinaryExpression& e) const {
        const tsql::BinaryExpression* at = &e;
        while (!contains(at->right)) {
            const auto* inner = std::get_if<tsql::BinaryExpression>(&at->left->node);
            if (inner == nullptr) return contains(at->left);
            at = inner;
        }
        return true;
    }
    bool operator()(const tsql::Comparison& e) const {
        return contains(e.left) || contains(e.right);
    }
    bool operator()(const tsql::LogicalExpression& e) const { return contains(e.operands); }
    bool operator()(const tsql::BetweenPredicate& e) const {
        return contains(e.value) || contains(e.low) || contains(e.high);
    }
    bool operator()(const tsql::QuantifiedComparison& e) const { return contains(e.value); }
    bool operator()(const tsql::InPredicate& e) const {
        return contains(e.value) || contains(e.list);
    }
    bool operator()(const tsql::LikePredicate& e) const {
        return contains(e.value) || contains(e.pattern) || contains(e.escape);
    }
    bool operator()(const tsql::NullPredicate& e) const { return contains(e.value); }
    bool operator()(const tsql::CaseExpression& e) const {
        return contains(e.subject) || contains(e.otherwise) ||
               std::any_of(e.branches.begin(), e.branches.end(),
                           [](const tsql::CaseBranch& branch) {
                               return contains(branch.when) || contains(branch.then);
                           });
    }
    bool operator()(const tsql::CastExpression& e) const {
        return contains(e.value) || contains(e.style);
    }
    bool operator()(const tsql::FunctionCall& e) const {
        if (isAggregateName(e.name) && !e.over) return true;
        return contains(e.arguments) || (e.over && inWindow(*e.over));
    }
};

}  // namespace

bool containsAggregate(const tsql::Expression& expression) {
    tsql::requireStack(expression.line);
    return std::visit(Search{}, expression.node);
}

}  // namespace kap::engine
