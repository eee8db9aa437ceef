#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "tsql/server_error.hpp"

// ROLLUP, CUBE and GROUPING SETS. Each row is there once for each set, under the set's number; what
// a set leaves out is null in its rows, so that one grouping by all of it makes the groups of all
// sets.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr const char* kSetNumber = "\"kap sets\".column1";

std::string numberText(std::size_t number) {
    return plain::text(static_cast<std::int64_t>(number));
}

// "column1 IN (0, 2)": the sets that hold one of the equal expressions.
std::string inSets(const tsql::Select& select, const std::vector<std::size_t>& expressions) {
    std::string sets;
    for (std::size_t i = 0; i < select.groupingSets.size(); ++i) {
        const auto& set = select.groupingSets[i];
        const bool holds = std::ranges::any_of(expressions, [&](std::size_t each) {
            return std::ranges::find(set, each) != set.end();
        });
        if (holds) sets += (sets.empty() ? "" : ", ") + numberText(i);
    }
    return std::string(kSetNumber) + " IN (" + sets + ")";
}

// The group that an expression repeats, or none.
std::optional<std::size_t> groupOf(const Scope& scope, const std::string& sql) {
    const auto found = std::ranges::find(scope.groups, sql);
    if (found == scope.groups.end()) return std::nullopt;
    return static_cast<std::size_t>(found - scope.groups.begin());
}

}  // namespace

std::string groupingSetsSource(std::size_t count, bool joins) {
    std::string rows;
    for (std::size_t i = 0; i < count; ++i)
        rows += (i == 0 ? "(" : ", (") + numberText(i) + ")";
    return (joins ? " CROSS JOIN (VALUES " : " FROM (VALUES ") + rows + ") AS \"kap sets\"";
}

// The groups come out in the order of what they are grouped by, each total behind what it totals:
// scripts of old read them so without saying ORDER BY.
std::string Binder::groupingSets(const tsql::Select& select, Scope& scope,
                                 const std::vector<BoundExpression>& groups) {
    std::string list = " GROUP BY ";
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        std::vector<std::size_t> equal;
        for (std::size_t j = 0; j < groups.size(); ++j) {
            if (scope.groups[j] == scope.groups[i]) equal.push_back(j);
        }
        const std::string held = inSets(select, equal);
        const std::string leftOut = "(CASE WHEN " + held + " THEN 0 ELSE 1 END)";
        BoundExpression value = groups[i];
        value.sql = "(CASE WHEN " + held + " THEN " + value.sql + " END)";
        value.plainColumn = false;
        if (equal.front() == i) list += leftOut + ", " + collated(value) + ", ";
        texts.push_back(value.sql);
        scope.groupsLeftOut.push_back(leftOut);
    }
    scope.groupTexts = std::move(texts);
    if (scope.groupTexts.empty()) scope.groupTexts.emplace_back();
    return list + kSetNumber;
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
        group = groupOf(scope, bound.sql);
    }
    if (!group) return std::nullopt;
    return BoundExpression::expression(scope.groupTexts[*group], bound.type, true);
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
    std::string sql;
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const Restored before(scope.grouped, false);
        const BoundExpression bound = value(*call.arguments[i], scope);
        const auto group = groupOf(scope, bound.sql);
        if (!group) {
            throw ServerError(tsql::Message::ArgumentNotInGroupBy,
                              {numberText(i + 1), asciiUpper(name)}, line);
        }
        const std::string leftOut =
            *group < scope.groupsLeftOut.size() ? scope.groupsLeftOut[*group] : "0";
        sql = sql.empty() ? leftOut : "(" + sql + " * 2 + " + leftOut + ")";
    }
    return BoundExpression::expression(sql, {several ? SqlType::Int : SqlType::TinyInt}, false);
}

}  // namespace kap::engine
