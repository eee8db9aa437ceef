#include <algorithm>
#include <cstdint>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/bound_select.hpp"
#include "tsql/server_error.hpp"

// ROLLUP, CUBE and GROUPING SETS. Each row is there once for each set, under the set's number; what
// a set leaves out is null in its rows, so that one grouping by all of it makes the groups of all
// sets.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr const char* kSets = "kap sets";

// The number of the set that a row is for: SQLite names the columns of VALUES.
sql::Expression setNumber() {
    return sql::Column{kSets, "column1", true};
}

// "column1 IN (0, 2)": the sets that hold one of the equal expressions.
sql::Expression inSets(const tsql::Select& select, const std::vector<std::size_t>& expressions) {
    sql::In sets{setNumber(), {}};
    for (std::size_t i = 0; i < select.groupingSets.size(); ++i) {
        const auto& set = select.groupingSets[i];
        const bool holds = std::ranges::any_of(expressions, [&](std::size_t each) {
            return std::ranges::find(set, each) != set.end();
        });
        if (holds) sets.list.push_back(sql::number(static_cast<std::int64_t>(i)));
    }
    return sets;
}

// The group that an expression repeats, or none.
std::optional<std::size_t> groupOf(const Scope& scope, const sql::Expression& expression) {
    const auto found = std::ranges::find(scope.groups, expression);
    if (found == scope.groups.end()) return std::nullopt;
    return static_cast<std::size_t>(found - scope.groups.begin());
}

}  // namespace

sql::From groupingSetsSource(std::size_t count) {
    sql::Values numbers;
    numbers.rows.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        numbers.rows.push_back({sql::number(static_cast<std::int64_t>(i))});
    return sql::from(sql::Derived{sql::Query{std::move(numbers)}, kSets});
}

// The groups come out in the order of what they are grouped by, each total behind what it totals:
// scripts of old read them so without saying ORDER BY.
std::vector<sql::Expression> Binder::groupingSets(const tsql::Select& select, Scope& scope,
                                                  const std::vector<BoundExpression>& groups) {
    std::vector<sql::Expression> list;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        std::vector<std::size_t> equal;
        for (std::size_t j = 0; j < groups.size(); ++j) {
            if (scope.groups[j] == scope.groups[i]) equal.push_back(j);
        }
        const sql::Expression held = inSets(select, equal);
        const sql::Expression leftOut = sql::when(held, sql::number(0), sql::number(1));
        const sql::Expression value = sql::when(held, groups[i].tree);
        if (equal.front() == i) {
            list.push_back(leftOut);
            list.push_back(sql::collated(value, groups[i].type));
        }
        scope.groupedValues.push_back(value);
        scope.groupsLeftOut.push_back(leftOut);
    }
    scope.groupingSets = true;
    list.push_back(setNumber());
    return list;
}

// What repeats an expression of GROUP BY is null in the sets that leave it out.
std::optional<BoundExpression> Binder::groupedOfSets(const tsql::Expression& expression,
                                                     Scope& scope) {
    const bool simple = std::holds_alternative<tsql::Literal>(expression.node) ||
                        std::holds_alternative<tsql::ScalarSubquery>(expression.node);
    if (simple || expression.isPredicate() || containsAggregate(expression)) return std::nullopt;
    if (const auto* call = std::get_if<tsql::FunctionCall>(&expression.node)) {
        const std::string name = asciiLower(call->name.last());
        if (name == "grouping" || name == "grouping_id") return std::nullopt;
    }
    std::optional<std::size_t> group;
    BoundExpression bound;
    {
        const Restored before(scope.grouped, false);
        bound = value(expression, scope);
        group = groupOf(scope, bound.tree);
    }
    if (!group) return std::nullopt;
    return BoundExpression::expression(scope.groupedValues[*group], bound.type, true);
}

// GROUPING(a): 1 in the rows of sets without a; GROUPING_ID(a, b): the same as digits of a number.
std::optional<BoundExpression> Binder::groupingCall(const tsql::FunctionCall& call, int line,
                                                    Scope& scope) {
    const std::string name = asciiLower(call.name.last());
    const bool several = name == "grouping_id";
    if (name != "grouping" && !several) return std::nullopt;
    if (call.arguments.empty() || (!several && call.arguments.size() != 1)) {
        throw ServerError(tsql::Message::WrongArgumentCount, {name, "1"}, line);
    }
    sql::Expression result;
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const Restored before(scope.grouped, false);
        const BoundExpression bound = value(*call.arguments[i], scope);
        const auto group = groupOf(scope, bound.tree);
        if (!group) {
            throw ServerError(tsql::Message::ArgumentNotInGroupBy,
                              {plain::text(static_cast<std::int64_t>(i) + 1), asciiUpper(name)},
                              line);
        }
        const sql::Expression leftOut =
            *group < scope.groupsLeftOut.size() ? scope.groupsLeftOut[*group] : sql::number(0);
        if (result) {
            result = sql::Binary{sql::BinaryOperator::Multiply, std::move(result), sql::number(2)};
            result = sql::Binary{sql::BinaryOperator::Add, std::move(result), leftOut};
        } else {
            result = leftOut;
        }
    }
    return BoundExpression::expression(std::move(result),
                                       {several ? SqlType::Int : SqlType::TinyInt}, false);
}

}  // namespace kap::engine
