#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/server_functions.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/catalog/object_names.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::FunctionCall;
using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

void checkArgumentCount(const ScalarFunction& function, const FunctionCall& call, int line) {
    const int count = static_cast<int>(call.arguments.size());
    if (call.star && function.name.ends_with("checksum")) return;
    if (!call.star && count >= function.fewest && (function.most < 0 || count <= function.most))
        return;
    const std::string name(function.name);
    if (function.fewest == function.most) {
        throw ServerError(tsql::Message::WrongArgumentCount, {name, plain::text(function.fewest)},
                          line);
    }
    if (function.most < 0) throw ServerError(tsql::Message::SyntaxNear, {call.name.last()}, line);
    throw ServerError(tsql::Message::WrongArgumentRange,
                      {name, plain::text(function.fewest), plain::text(function.most)}, line);
}

[[noreturn]] void aggregateRefused(AggregateUse use, int line) {
    switch (use) {
        case AggregateUse::RefusedInOn:
            throw ServerError(tsql::Message::AggregateInJoin, {}, line);
        case AggregateUse::RefusedInGroupBy:
            throw ServerError(tsql::Message::AggregateInGroupBy, {}, line);
        case AggregateUse::RefusedInSet:
            throw ServerError(tsql::Message::AggregateInSetList, {}, line);
        case AggregateUse::RefusedInWhere:
            throw ServerError(tsql::Message::AggregateInWhere, {}, line);
        default:
            throw ServerError(tsql::Message::AggregateNotAllowed, {}, line);
    }
}

// sys.fn_varbintohexstr, master.dbo.fn_varbintohexstr: functions that every server has as objects.
bool isOfTheServer(const tsql::ObjectName& name) {
    return equalsIgnoringCase(name.parts.front(), "sys") ||
           (equalsIgnoringCase(name.parts.front(), "master") &&
            asciiLower(name.last()).starts_with("fn_"));
}

// The columns that the star of CHECKSUM(*) stands for: those that can be compared.
std::vector<BoundExpression> everyColumn(const Scope& scope, int line) {
    constexpr std::size_t kMost = 127;  // that a call within the database takes
    std::vector<BoundExpression> columns;
    for (const Source& source : scope.sources) {
        for (const SourceColumn& column : source.columns) {
            if (tsql::isLarge(column.value.type.type)) continue;
            columns.push_back(scope.grouped
                                  ? resolveColumn({{source.name, column.name}, line}, scope).value
                                  : column.value);
        }
    }
    scope.readsOwn = true;
    if (columns.empty()) throw tsql::syntaxError("*", line);
    if (columns.size() > kMost) {
        throw tsql::unsupported("CHECKSUM(*) of more than 127 columns", line);
    }
    return columns;
}

// Few functions take a sql_variant as it is.
void refuseVariantArguments(const ScalarFunction& function, const ScalarCall& call) {
    static constexpr auto kTakingAny = std::to_array<std::string_view>(
        {"binary_checksum", "checksum", "choose", "coalesce", "datalength", "iif", "isnull",
         "isnumeric", "nullif", "sql_variant_property", "collate"});
    const auto variant = std::ranges::find_if(call.arguments, [](const BoundExpression& argument) {
        return tsql::isVariant(argument.type.type);
    });
    if (variant == call.arguments.end() ||
        std::ranges::find(kTakingAny, function.name) != kTakingAny.end()) {
        return;
    }
    const auto place = variant - call.arguments.begin() + (function.firstIsWord ? 2 : 1);
    throw ServerError(tsql::Message::InvalidArgumentType,
                      {"sql_variant", plain::text(static_cast<std::int64_t>(place)), call.name()},
                      call.line);
}

void refuseServerFunction(const std::string& name, int line) {
    if (isServerFunction(name)) throw tsql::unsupported(asciiUpper(name), line);
}

sql::Expression aggregateCall(const fn::Function& function, sql::Expression argument,
                              bool distinct) {
    return sql::Call{function, {std::move(argument)}, distinct};
}

TypeSpec sumType(const TypeSpec& type) {
    constexpr int kWidest = 38;
    if (tsql::isDecimal(type.type)) {
        return tsql::decimalType(SqlType::Numeric, kWidest, type.scale);
    }
    if (tsql::isMoney(type.type)) return {SqlType::Money};
    if (tsql::isApproximate(type.type)) return {SqlType::Float};
    return type.type == SqlType::BigInt ? TypeSpec{SqlType::BigInt} : TypeSpec{SqlType::Int};
}

const fn::Function& sumFunction(const TypeSpec& type) {
    switch (type.type) {
        case SqlType::Numeric:
            return fn::kSumNumeric;
        case SqlType::Money:
            return fn::kSumMoney;
        case SqlType::Float:
            return fn::kSumFloat;
        case SqlType::BigInt:
            return fn::kSumBigint;
        default:
            return fn::kSumInt;
    }
}

const fn::Function& statisticsFunction(std::string_view name) {
    if (name == "stdev") return fn::kStdev;
    if (name == "stdevp") return fn::kStdevp;
    return name == "var" ? fn::kVar : fn::kVarp;
}

}  // namespace

bool isStatisticsName(std::string_view name) {
    return name == "stdev" || name == "stdevp" || name == "var" || name == "varp";
}

BoundExpression Binder::node(const FunctionCall& node, int line, Scope& scope) {
    if (node.name.last() == tsql::kNextValue) return nextValue(node, line, scope);
    if (node.over) return windowed(node, line, scope);
    if (isAggregateName(node.name)) return aggregate(node, line, scope);
    if (node.name.parts.size() > 1) return storedFunction(node, line, scope);
    if (auto system = systemFunction(node, line, scope)) return std::move(*system);
    const ScalarFunction* function = findFunction(node.name.last());
    if (function == nullptr) {
        if (auto grouping = groupingCall(node, line, scope)) return std::move(*grouping);
        refuseWithoutWindow(node, line);
        refuseServerFunction(node.name.last(), line);
        throw ServerError(tsql::Message::UnknownBuiltInFunction, {node.name.last()}, line);
    }
    checkArgumentCount(*function, node, line);
    ScalarCall call{*this, node, {}, line};
    for (std::size_t i = function->firstIsWord ? 1 : 0; i < node.arguments.size(); ++i) {
        call.arguments.push_back(value(*node.arguments[i], scope));
    }
    if (node.star) call.arguments = everyColumn(scope, line);
    refuseVariantArguments(*function, call);
    BoundExpression result = function->bind(call);
    if (!equalsIgnoringCase(function->name, "collate")) {
        inheritCollation(result, call.arguments, function->name.data(), line);
    }
    return result;
}

// dbo.f(a, b): the values are brought to the types of its parameters, and the session runs it.
BoundExpression Binder::storedFunction(const FunctionCall& call, int line, Scope& scope) {
    if (equalsIgnoringCase(call.name.parts.front(), "$partition")) {
        throw tsql::unsupported("$PARTITION", line);
    }
    if (isOfTheServer(call.name)) throw tsql::unsupported(call.name.text(), line);
    const std::string name = followedName(call.name, schema_, catalogue());
    const Function* function = name.empty() ? nullptr : catalogue().findFunction(name);
    if (function == nullptr || function->returnsTable()) {
        refuseXmlMethod(call.name);
        throw ServerError(tsql::Message::UnknownColumnOrFunction,
                          {call.name.parts.front(), call.name.text()}, line);
    }
    if (call.arguments.size() != function->parameters.size()) {
        const bool few = call.arguments.size() < function->parameters.size();
        throw few
            ? ServerError(tsql::Message::TooFewArguments, {call.name.text()}, line)
            : ServerError(tsql::Message::TooManyArguments, {call.name.text()}, line).withState(1);
    }
    readsOtherRows_ = true;
    sql::Call stored{computedColumn_ ? fn::kColumnCall : fn::kCall, {}};
    stored.arguments.reserve(call.arguments.size() + 1);
    stored.arguments.push_back(sql::text(function->name));
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const BoundExpression argument =
            std::holds_alternative<tsql::DefaultArgument>(call.arguments[i]->node)
                ? defaultArgument(*function, i, line)
                : value(*call.arguments[i], scope);
        stored.arguments.push_back(convertTo(argument, function->parameters[i].type, line).tree);
    }
    return BoundExpression::expression(std::move(stored), function->returns, true);
}

BoundExpression Binder::defaultArgument(const Function& function, std::size_t parameter, int line) {
    const Function::Parameter& wanted = function.parameters[parameter];
    if (wanted.defaultValue == nullptr) {
        throw ServerError(tsql::Message::ParameterNotSupplied,
                          {bareName(function.name), wanted.name}, line)
            .withState(3);
    }
    Scope constants;
    return value(*wanted.defaultValue, constants);
}

bool isAggregateName(const tsql::ObjectName& name) {
    static constexpr const char* kNames[] = {"COUNT", "COUNT_BIG", "SUM",        "AVG",
                                             "MIN",   "MAX",       "STRING_AGG", "CHECKSUM_AGG"};
    return name.parts.size() == 1 &&
           (isStatisticsName(asciiLower(name.last())) ||
            std::any_of(std::begin(kNames), std::end(kNames),
                        [&](const char* known) { return equalsIgnoringCase(known, name.last()); }));
}

ServerError aggregateOfAggregate(int line) {
    return {tsql::Message::AggregateWithinAggregate, {}, line};
}

BoundExpression Binder::aggregate(const FunctionCall& call, int line, Scope& scope) {
    const std::string name = asciiLower(call.name.last());
    if (scope.insideAggregate) throw aggregateOfAggregate(line);
    if (scope.aggregates != AggregateUse::Allowed) aggregateRefused(scope.aggregates, line);
    if (name == "string_agg") return joinedTexts(call, line, scope);
    const bool counts = name == "count" || name == "count_big";
    const TypeSpec countType = name == "count" ? TypeSpec{SqlType::Int} : TypeSpec{SqlType::BigInt};
    if (call.star && counts) {
        return BoundExpression::expression(sql::call(fn::kCount, sql::Star()), countType, false);
    }
    if (call.star || call.arguments.size() != 1) {
        throw ServerError(tsql::Message::WrongArgumentCount, {name, "1"}, line);
    }
    const Restored inside(scope.insideAggregate, true);
    const Restored own(scope.readsOwn, false);
    const Restored outer(scope.readsOuter, false);
    const BoundExpression argument = value(*call.arguments.front(), scope);
    if (scope.readsOuter && !scope.readsOwn) {
        throw tsql::unsupported("an aggregate of columns of an outer query", line);
    }
    if (counts)
        return BoundExpression::expression(
            aggregateCall(fn::kCount, collated(argument), call.distinct), countType, false);
    if (argument.nullLiteral) {
        throw ServerError(tsql::Message::InvalidOperandType, {"NULL", name}, line);
    }
    if (name == "sum") return total(argument, call.distinct, "sum", line);
    if (name == "checksum_agg") {
        return BoundExpression::expression(
            aggregateCall(fn::kChecksumAgg, convertTo(argument, {SqlType::Int}, line).tree,
                          call.distinct),
            {SqlType::Int}, true);
    }
    if (name == "avg") return average(argument, call.distinct, line);
    if (isStatisticsName(name)) return statistics(name, argument, call.distinct, line);
    const SqlType type = argument.type.type;
    if (type == SqlType::Bit || type == SqlType::Text || type == SqlType::NText ||
        type == SqlType::Image) {
        throw ServerError(tsql::Message::InvalidOperandType, {tsql::typeName(type), name}, line);
    }
    BoundExpression result = BoundExpression::expression(
        aggregateCall(name == "min" ? fn::kMin : fn::kMax, collated(argument), call.distinct),
        argument.type, true);
    result.collation = argument.collation;
    result.coercibility = argument.coercibility;
    return result;
}

BoundExpression Binder::total(const BoundExpression& argument, bool distinct,
                              std::string_view function, int line) const {
    if (!tsql::isNumber(argument.type.type) || argument.type.type == SqlType::Bit) {
        throw ServerError(tsql::Message::InvalidOperandType,
                          {tsql::typeName(argument.type.type), function}, line);
    }
    const TypeSpec type = sumType(argument.type);
    return BoundExpression::expression(aggregateCall(sumFunction(type), argument.tree, distinct),
                                       type, true);
}

// The deviation or the variance, of a sample or of the whole population: a float.
BoundExpression Binder::statistics(const std::string& name, const BoundExpression& argument,
                                   bool distinct, int line) const {
    (void)total(argument, distinct, name, line);  // refuses what is no number
    const BoundExpression number = convertTo(argument, {SqlType::Float}, line);
    return BoundExpression::expression(
        aggregateCall(statisticsFunction(name), number.tree, distinct), {SqlType::Float}, true);
}

// The sum divided by the count: whole numbers give a whole number, decimals at least six decimals.
BoundExpression Binder::average(const BoundExpression& argument, bool distinct, int line) const {
    const BoundExpression sum = total(argument, distinct, "avg", line);
    return quotient(sum, aggregateCall(fn::kCount, argument.tree, distinct));
}

BoundExpression Binder::quotient(const BoundExpression& sum, const sql::Expression& count) {
    if (tsql::isApproximate(sum.type.type)) {
        return BoundExpression::expression(sql::call(fn::kFloatDivide, sum.tree, count, sum.type),
                                           sum.type, true);
    }
    TypeSpec type = sum.type;
    constexpr int kLeastScale = 6;
    if (tsql::isDecimal(type.type)) type.scale = std::max(type.scale, kLeastScale);
    const int shift = storedScale(type) - storedScale(sum.type);
    return BoundExpression::expression(sql::call(fn::kDivide, sum.tree, count, shift, type), type,
                                       true);
}

}  // namespace kap::engine
