#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "base/restored.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/stack_limit.hpp"

// GROUP BY ALL makes groups of all rows, and its aggregates look at those alone for which WHERE
// holds: count(a) is count(CASE WHEN condition THEN a END).
namespace kap::tsql {
namespace {

bool isAggregate(const FunctionCall& call) {
    static constexpr std::array kAggregates{"count", "count_big", "sum",        "avg",
                                            "min",   "max",       "string_agg", "checksum_agg",
                                            "stdev", "stdevp",    "var",        "varp"};
    return call.name.parts.size() == 1 && !call.over &&
           std::ranges::find(kAggregates, asciiLower(call.name.last())) != kAggregates.end();
}

}  // namespace

void Parser::groupAll(Select& select, std::size_t where) {
    select.where = nullptr;
    for (SelectItem& item : select.items) {
        if (auto* shown = std::get_if<ExpressionItem>(&item.node)) {
            filterAggregates(shown->value, where);
        } else if (auto* assigned = std::get_if<AssignmentItem>(&item.node)) {
            filterAggregates(assigned->value, where);
        }
    }
    filterAggregates(select.having, where);
}

// The condition is read once more for each aggregate.
ExpressionPtr Parser::conditionAt(std::size_t start) {
    const Restored place(position_, start);
    return condition();
}

void Parser::filterAggregate(FunctionCall& call, std::size_t where) {
    const int line = call.name.line;
    CaseExpression filtered;
    CaseBranch& branch = filtered.branches.emplace_back();
    branch.when = conditionAt(where);
    branch.then = call.star ? make(Literal{LiteralKind::Integer, "1"}, line)
                            : std::move(call.arguments.front());
    const int below = std::max(branch.when->depth, branch.then->depth);
    if (call.star) call.arguments.emplace_back();
    call.star = false;
    call.arguments.front() = make(std::move(filtered), line, below);
}

void Parser::filterAggregates(ExpressionPtr& expression, std::size_t where) {
    if (expression == nullptr) return;
    requireStack(expression->line);
    const auto each = [&](std::initializer_list<ExpressionPtr*> parts) {
        for (ExpressionPtr* part : parts)
            filterAggregates(*part, where);
    };
    const auto all = [&](std::vector<ExpressionPtr>& parts) {
        for (ExpressionPtr& part : parts)
            filterAggregates(part, where);
    };
    Expression::Node& node = expression->node;
    if (auto* call = std::get_if<FunctionCall>(&node)) {
        if (isAggregate(*call) && (call->star || !call->arguments.empty())) {
            filterAggregate(*call, where);
        } else {
            all(call->arguments);
        }
    } else if (auto* unary = std::get_if<UnaryExpression>(&node)) {
        each({&unary->operand});
    } else if (auto* binary = std::get_if<BinaryExpression>(&node)) {
        each({&binary->left, &binary->right});
    } else if (auto* compared = std::get_if<Comparison>(&node)) {
        each({&compared->left, &compared->right});
    } else if (auto* logical = std::get_if<LogicalExpression>(&node)) {
        all(logical->operands);
    } else if (auto* between = std::get_if<BetweenPredicate>(&node)) {
        each({&between->value, &between->low, &between->high});
    } else if (auto* quantified = std::get_if<QuantifiedComparison>(&node)) {
        each({&quantified->value});
    } else if (auto* in = std::get_if<InPredicate>(&node)) {
        each({&in->value});
        all(in->list);
    } else if (auto* like = std::get_if<LikePredicate>(&node)) {
        each({&like->value, &like->pattern, &like->escape});
    } else if (auto* null = std::get_if<NullPredicate>(&node)) {
        each({&null->value});
    } else if (auto* cast = std::get_if<CastExpression>(&node)) {
        each({&cast->value, &cast->style});
    } else if (auto* chosen = std::get_if<CaseExpression>(&node)) {
        each({&chosen->subject, &chosen->otherwise});
        for (CaseBranch& branch : chosen->branches)
            each({&branch.when, &branch.then});
    }
}

}  // namespace kap::tsql
