#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/server_functions.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

// Functions with OVER.
namespace kap::engine {

using tsql::FunctionCall;
using tsql::ServerError;
using tsql::SqlType;

namespace {

// Functions that number the rows of a window.
constexpr std::array kRankings{fn::kRowNumber, fn::kRank, fn::kDenseRank};

const fn::Function* rankingNamed(std::string_view name) {
    const auto* const found = std::ranges::find(kRankings, name, &fn::Function::name);
    return found == kRankings.end() ? nullptr : found;
}

sql::Expression over(sql::Expression call, const sql::Expression& window) {
    return sql::Over{std::move(call), window};
}

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
    const bool windowed = rankingNamed(name) != nullptr || isPercentile(name) ||
                          isOneOf(name, {"ntile", "first_value", "last_value", "lag", "lead",
                                         "cume_dist", "percent_rank"});
    if (!windowed) return;
    throw ServerError(tsql::Message::OverNeeded, {name}, line);
}

sql::Expression Binder::windowOf(const tsql::Window& window, int line, Scope& scope) {
    sql::Window result;
    result.partitions.reserve(window.partitionBy.size());
    for (const auto& expression : window.partitionBy)
        result.partitions.push_back(collated(value(*expression, scope)));
    result.order.reserve(window.orderBy.size());
    // ORDER BY (SELECT NULL) says that any order will do.
    for (const tsql::OrderItem& item : window.orderBy)
        result.order.push_back({collated(value(*item.value, scope)), item.descending});
    if (!window.frame.empty() && window.orderBy.empty()) {
        throw ServerError(tsql::Message::FrameWithoutOrder, {}, line);
    }
    result.frame = window.frame;
    return result;
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
    const sql::Expression window = windowOf(*call.over, line, scope);
    if (isAggregateName(call.name)) return windowAggregate(call, window, line, scope);
    if (isPercentile(name)) return percentile(call, window, line, scope);
    std::vector<BoundExpression> arguments;
    for (const auto& argument : call.arguments)
        arguments.push_back(value(*argument, scope));
    if (const fn::Function* ranking = rankingNamed(name)) {
        requireOrder(call, name, line);
        refuseFrame(call, name, line);
        return BoundExpression::expression(over(sql::call(*ranking), window), {SqlType::BigInt},
                                           false);
    }
    if (name == "ntile" && arguments.size() == 1) {
        requireOrder(call, name, line);
        refuseFrame(call, name, line);
        const BoundExpression groups = convertTo(arguments[0], {SqlType::BigInt}, line);
        return BoundExpression::expression(over(sql::call(fn::kNtile, groups.tree), window),
                                           {SqlType::BigInt}, false);
    }
    if (isOneOf(name, {"first_value", "last_value"}) && arguments.size() == 1) {
        requireOrder(call, name, line);
        const fn::Function& function =
            name == fn::kFirstValue.name ? fn::kFirstValue : fn::kLastValue;
        return BoundExpression::expression(over(sql::call(function, arguments[0].tree), window),
                                           arguments[0].type, true);
    }
    const bool offset =
        isOneOf(name, {"lag", "lead"}) && !arguments.empty() && arguments.size() <= 3;
    if (isOneOf(name, {"cume_dist", "percent_rank"}) && arguments.empty()) {
        requireOrder(call, name, line);
        const fn::Function& function =
            name == fn::kCumeDist.name ? fn::kCumeDist : fn::kPercentRank;
        return BoundExpression::expression(over(sql::call(function), window), {SqlType::Float},
                                           false);
    }
    if (!offset) {
        if (isServerFunction(name)) throw tsql::unsupported(asciiUpper(name), line);
        throw ServerError(tsql::Message::UnknownFunction, {call.name.last()}, line);
    }
    requireOrder(call, name, line);
    refuseFrame(call, name, line);
    sql::Call other{name == fn::kLag.name ? fn::kLag : fn::kLead, {arguments[0].tree}};
    if (arguments.size() > 1) {
        other.arguments.push_back(convertTo(arguments[1], {SqlType::BigInt}, line).tree);
    }
    if (arguments.size() > 2) {
        other.arguments.push_back(convertTo(arguments[2], arguments[0].type, line).tree);
    }
    return BoundExpression::expression(over(std::move(other), window), arguments[0].type, true);
}

// PERCENTILE_CONT(0.5) WITHIN GROUP (ORDER BY value) OVER (PARTITION BY ...): the order is that of
// the values, and the window is the whole partition.
BoundExpression Binder::percentile(const FunctionCall& call, const sql::Expression& window,
                                   int line, Scope& scope) {
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
        over(sql::call(continuous ? fn::kPercentileCont : fn::kPercentileDisc, fraction.tree,
                       given.tree, call.within.front().descending ? 1 : 0),
             window),
        given.type, true);
}

// SQLite adds up within a window by itself; what the sum must fit in is checked behind it.
BoundExpression Binder::windowAggregate(const FunctionCall& call, const sql::Expression& window,
                                        int line, Scope& scope) {
    if (call.distinct) {
        throw ServerError(tsql::Message::DistinctWithOver, {}, line);
    }
    const std::string name = asciiLower(call.name.last());
    if (call.star) {
        return BoundExpression::expression(over(sql::call(fn::kCount, sql::Star()), window),
                                           {SqlType::Int}, false);
    }
    if (call.arguments.size() != 1) {
        throw ServerError(tsql::Message::WrongArgumentCount, {name, "1"}, line);
    }
    const BoundExpression argument = value(*call.arguments.front(), scope);
    const auto count = [&] { return over(sql::call(fn::kCount, argument.tree), window); };
    if (name == "count") return BoundExpression::expression(count(), {SqlType::Int}, false);
    if (name == "count_big") return BoundExpression::expression(count(), {SqlType::BigInt}, false);
    if (name == "min" || name == "max") {
        const fn::Function& function = name == "min" ? fn::kMin : fn::kMax;
        return BoundExpression::expression(over(sql::call(function, collated(argument)), window),
                                           argument.type, true);
    }
    if (name == "checksum_agg") {
        const BoundExpression number = convertTo(argument, {SqlType::Int}, line);
        return BoundExpression::expression(over(sql::call(fn::kChecksumAgg, number.tree), window),
                                           {SqlType::Int}, true);
    }
    if (isStatisticsName(name)) {
        BoundExpression result = statistics(name, argument, false, line);
        result.tree = over(std::move(result.tree), window);
        return result;
    }
    BoundExpression sum = total(argument, false, name, line);
    const bool decimal = tsql::isDecimal(argument.type.type);
    const bool wide = tsql::isWideDecimal(argument.type);
    sum.tree = over(sql::call(wide ? fn::kSumNumeric : fn::kSum, argument.tree), window);
    if (decimal && !wide) sum.tree = sql::call(fn::kWide, std::move(sum.tree), 0);
    if (name == "sum" && sum.type.type == SqlType::Int) {
        return convertTo(BoundExpression::expression(sum.tree, {SqlType::BigInt}, true), sum.type,
                         line);
    }
    if (name == "sum") return sum;
    return quotient(sum, count());
}

}  // namespace kap::engine
