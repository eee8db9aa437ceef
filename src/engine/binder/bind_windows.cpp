#include <algorithm>
#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/server_functions.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

// Functions with OVER.
namespace kap::engine {

using tsql::FunctionCall;
using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

// Functions that number the rows of a window.
constexpr std::array kRankings{"row_number", "rank", "dense_rank"};

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isPercentile(std::string_view name) {
    return isOneOf(name, {"percentile_cont", "percentile_disc"});
}

void requireOrder(const FunctionCall& call, const std::string& name, int line) {
    if (!call.over->orderBy.empty()) return;
    throw ServerError(tsql::Message::OverWithOrderNeeded, {name}, line);
}

// A number of a row, or another row, depends on no frame.
void refuseFrame(const FunctionCall& call, const std::string& name, int line) {
    if (call.over->frame.empty()) return;
    throw ServerError(tsql::Message::FrameNotAllowed, {name}, line);
}

}  // namespace

void refuseWithoutWindow(const FunctionCall& call, int line) {
    const std::string name = asciiLower(call.name.last());
    const bool windowed =
        std::ranges::find(kRankings, name) != kRankings.end() || isPercentile(name) ||
        isOneOf(name,
                {"ntile", "first_value", "last_value", "lag", "lead", "cume_dist", "percent_rank"});
    if (!windowed) return;
    throw ServerError(tsql::Message::OverNeeded, {name}, line);
}

std::string Binder::overText(const tsql::Window& window, int line, Scope& scope) {
    std::string text;
    for (const auto& expression : window.partitionBy) {
        text += (text.empty() ? "PARTITION BY " : ", ") + collated(value(*expression, scope));
    }
    std::string order;
    for (const tsql::OrderItem& item : window.orderBy) {
        const BoundExpression bound = value(*item.value, scope);
        // ORDER BY (SELECT NULL) says that any order will do.
        order += (order.empty() ? "ORDER BY " : ", ") + collated(bound);
        if (item.descending) order += " DESC";
    }
    if (!order.empty()) text += (text.empty() ? "" : " ") + order;
    if (!window.frame.empty()) {
        if (window.orderBy.empty()) {
            throw ServerError(tsql::Message::FrameWithoutOrder, {}, line);
        }
        text += " " + window.frame;
    }
    return " OVER (" + text + ")";
}

BoundExpression Binder::windowed(const FunctionCall& call, int line, Scope& scope) {
    const std::string name = asciiLower(call.name.last());
    if (scope.aggregates != AggregateUse::Allowed || scope.windowsRefused) {
        throw ServerError(tsql::Message::WindowedNotAllowed, {}, line);
    }
    if (scope.insideWindow || scope.insideAggregate) {
        throw ServerError(tsql::Message::WindowedInWindowed, {}, line);
    }
    const Restored inside(scope.insideWindow, true);
    ++windowsBound_;
    const std::string over = overText(*call.over, line, scope);
    if (isAggregateName(call.name)) return windowAggregate(call, over, line, scope);
    if (isPercentile(name)) return percentile(call, over, line, scope);
    std::vector<BoundExpression> arguments;
    for (const auto& argument : call.arguments)
        arguments.push_back(value(*argument, scope));
    if (std::find(kRankings.begin(), kRankings.end(), name) != kRankings.end()) {
        requireOrder(call, name, line);
        refuseFrame(call, name, line);
        return BoundExpression::expression(name + "()" + over, {SqlType::BigInt}, false);
    }
    if (name == "ntile" && arguments.size() == 1) {
        requireOrder(call, name, line);
        refuseFrame(call, name, line);
        const BoundExpression groups = convertTo(arguments[0], {SqlType::BigInt}, line);
        return BoundExpression::expression("ntile(" + groups.sql + ")" + over, {SqlType::BigInt},
                                           false);
    }
    if (isOneOf(name, {"first_value", "last_value"}) && arguments.size() == 1) {
        requireOrder(call, name, line);
        return BoundExpression::expression(name + "(" + arguments[0].sql + ")" + over,
                                           arguments[0].type, true);
    }
    const bool offset =
        isOneOf(name, {"lag", "lead"}) && !arguments.empty() && arguments.size() <= 3;
    if (isOneOf(name, {"cume_dist", "percent_rank"}) && arguments.empty()) {
        requireOrder(call, name, line);
        return BoundExpression::expression(name + "()" + over, {SqlType::Float}, false);
    }
    if (!offset) {
        if (isServerFunction(name)) throw tsql::unsupported(asciiUpper(name), line);
        throw ServerError(tsql::Message::UnknownFunction, {call.name.last()}, line);
    }
    requireOrder(call, name, line);
    refuseFrame(call, name, line);
    std::string list = arguments[0].sql;
    if (arguments.size() > 1) list += ", " + convertTo(arguments[1], {SqlType::BigInt}, line).sql;
    if (arguments.size() > 2) list += ", " + convertTo(arguments[2], arguments[0].type, line).sql;
    return BoundExpression::expression(name + "(" + list + ")" + over, arguments[0].type, true);
}

// PERCENTILE_CONT(0.5) WITHIN GROUP (ORDER BY value) OVER (PARTITION BY ...): the order is that of
// the values, and the window is the whole partition.
BoundExpression Binder::percentile(const FunctionCall& call, const std::string& over, int line,
                                   Scope& scope) {
    const std::string name = asciiLower(call.name.last());
    if (call.arguments.size() != 1) {
        throw ServerError(tsql::Message::WrongArgumentCount, {name, "1"}, line);
    }
    if (call.within.size() != 1) {
        throw ServerError(tsql::Message::WithinGroupNeeded, {name}, line);
    }
    if (!call.over->orderBy.empty()) {
        throw ServerError(tsql::Message::OrderInOverNotAllowed, {name}, line);
    }
    refuseFrame(call, name, line);
    const BoundExpression fraction =
        convertTo(value(*call.arguments.front(), scope), {SqlType::Float}, line);
    const BoundExpression ordered = value(*call.within.front().value, scope);
    const bool continuous = name == "percentile_cont";
    const BoundExpression given = continuous ? convertTo(ordered, {SqlType::Float}, line) : ordered;
    return BoundExpression::expression(
        callText(continuous ? "kap_percentile_cont" : "kap_percentile_disc", fraction.sql,
                 given.sql, call.within.front().descending ? "1" : "0") +
            over,
        given.type, true);
}

// SQLite adds up within a window by itself; what the sum must fit in is checked behind it.
BoundExpression Binder::windowAggregate(const FunctionCall& call, const std::string& over, int line,
                                        Scope& scope) {
    FunctionCall plain{call.name, {}, call.distinct, call.star};
    if (call.distinct) {
        throw ServerError(tsql::Message::DistinctWithOver, {}, line);
    }
    const std::string name = asciiLower(call.name.last());
    if (call.star) return BoundExpression::expression("count(*)" + over, {SqlType::Int}, false);
    if (call.arguments.size() != 1) {
        throw ServerError(tsql::Message::WrongArgumentCount, {name, "1"}, line);
    }
    const BoundExpression argument = value(*call.arguments.front(), scope);
    if (name == "count") {
        return BoundExpression::expression("count(" + argument.sql + ")" + over, {SqlType::Int},
                                           false);
    }
    if (name == "count_big") {
        return BoundExpression::expression("count(" + argument.sql + ")" + over, {SqlType::BigInt},
                                           false);
    }
    if (name == "min" || name == "max") {
        return BoundExpression::expression(name + "(" + collated(argument) + ")" + over,
                                           argument.type, true);
    }
    if (name == "checksum_agg") {
        const BoundExpression number = convertTo(argument, {SqlType::Int}, line);
        return BoundExpression::expression(callText("kap_checksum_agg", number.sql) + over,
                                           {SqlType::Int}, true);
    }
    if (isStatisticsName(name)) {
        BoundExpression result = statistics(name, argument, false, line);
        result.sql += over;
        return result;
    }
    const BoundExpression sum = total(argument, false, name.c_str(), line);
    const bool decimal = tsql::isDecimal(argument.type.type);
    std::string added = (tsql::isWideDecimal(argument.type) ? "kap_sum_numeric(" : "sum(") +
                        argument.sql + ")" + over;
    if (decimal && !tsql::isWideDecimal(argument.type)) added = callText("kap_wide", added, "0");
    if (name == "sum" && sum.type.type == SqlType::Int) {
        return convertTo(BoundExpression::expression(added, {SqlType::BigInt}, true), sum.type,
                         line);
    }
    if (name == "sum") return BoundExpression::expression(added, sum.type, true);
    const std::string count = "count(" + argument.sql + ")" + over;
    if (tsql::isApproximate(sum.type.type)) {
        return BoundExpression::expression(
            callText("kap_float_divide", added, count, typeArgument(sum.type)), sum.type, true);
    }
    TypeSpec type = sum.type;
    constexpr int kLeastScale = 6;
    if (tsql::isDecimal(type.type)) type.scale = std::max(type.scale, kLeastScale);
    const int shift = storedScale(type) - storedScale(sum.type);
    return BoundExpression::expression(
        callText("kap_divide", added, count, plain::text(shift), typeArgument(type)), type, true);
}

}  // namespace kap::engine
