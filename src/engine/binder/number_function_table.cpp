#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kMostDecimalDigits = 38;

// Functions keep decimals, money, int and bigint; smaller whole numbers become int, real becomes
// float.
TypeSpec widened(const TypeSpec& type) {
    switch (type.type) {
        case SqlType::Bit:
        case SqlType::Real:
            return {SqlType::Float};
        case SqlType::TinyInt:
        case SqlType::SmallInt:
            return {SqlType::Int};
        case SqlType::SmallMoney:
            return {SqlType::Money};
        default:
            return type;
    }
}

BoundExpression argument(ScalarCall& call) {
    const BoundExpression number = call.number(0);
    return call.binder.convertTo(number, widened(number.type), call.line);
}

BoundExpression result(const BoundExpression& source, sql::Expression tree, const TypeSpec& type) {
    return BoundExpression::expression(std::move(tree), type, source.nullable);
}

BoundExpression absolute(ScalarCall& call) {
    const BoundExpression value = argument(call);
    if (tsql::isApproximate(value.type.type))
        return result(value, sql::call(fn::kFloatAbs, value.tree), value.type);
    return result(value, sql::call(fn::kAbs, value.tree, value.type), value.type);
}

BoundExpression sign(ScalarCall& call) {
    const BoundExpression value = argument(call);
    if (tsql::isApproximate(value.type.type))
        return result(value, sql::call(fn::kFloatSign, value.tree), value.type);
    return result(value, sql::call(fn::kSign, value.tree, value.type), value.type);
}

BoundExpression rounded(ScalarCall& call) {
    const BoundExpression value = argument(call);
    const sql::Expression truncate = call.integer(2, 0);
    return BoundExpression::expression(
        tsql::isApproximate(value.type.type)
            ? sql::call(fn::kFloatRound, value.tree, call.integer(1), truncate)
            : sql::call(fn::kRound, value.tree, call.integer(1), truncate, value.type),
        value.type, call.anyNullable());
}

// A whole number in the type of the argument; decimals lose their fraction, money keeps its own.
BoundExpression towards(ScalarCall& call, const fn::Function& exactFunction,
                        const fn::Function& floatFunction) {
    BoundExpression value = argument(call);
    if (tsql::isApproximate(value.type.type))
        return result(value, sql::call(floatFunction, value.tree), value.type);
    const int scale = storedScale(value.type);
    if (scale == 0) return value;
    const sql::Expression whole = sql::call(exactFunction, value.tree, scale);
    if (tsql::isMoney(value.type.type)) {
        return result(value,
                      sql::call(fn::kAdd, sql::call(fn::kScale, whole, scale), 0, value.type),
                      value.type);
    }
    TypeSpec type = value.type;
    type.type = SqlType::Numeric;
    type.scale = 0;
    return result(value, whole, type);
}

BoundExpression ceiling(ScalarCall& call) {
    return towards(call, fn::kCeiling, fn::kFloatCeiling);
}
BoundExpression floorFunction(ScalarCall& call) {
    return towards(call, fn::kFloor, fn::kFloatFloor);
}

// The result has the type of the base: POWER(2, 0.5) is 1. A decimal keeps its decimals and may
// become as large as one can be.
BoundExpression power(ScalarCall& call) {
    TypeSpec type = argument(call).type;
    if (tsql::isDecimal(type.type)) {
        type = tsql::decimalType(SqlType::Numeric, kMostDecimalDigits, type.scale);
    }
    const BoundExpression value = BoundExpression::expression(
        sql::call(fn::kPower, call.real(0), call.real(1)), {SqlType::Float}, call.anyNullable());
    return call.binder.castTo(value, type, 0, call.line);
}

// LOG(x) is the natural one, LOG(x, base) any other.
BoundExpression logarithm(ScalarCall& call) {
    return BoundExpression::expression(call.arguments.size() > 1
                                           ? sql::call(fn::kLog, call.real(0), call.real(1))
                                           : sql::call(fn::kLog, call.real(0)),
                                       {SqlType::Float}, call.anyNullable());
}

template <const fn::Function& kFunction>
BoundExpression ofFloat(ScalarCall& call) {
    return BoundExpression::expression(sql::call(kFunction, call.real(0)), {SqlType::Float},
                                       call.anyNullable());
}

BoundExpression pi(ScalarCall& /*call*/) {
    return BoundExpression::literal(3.141592653589793, {SqlType::Float});
}

BoundExpression angleOf(ScalarCall& call) {
    return BoundExpression::expression(sql::call(fn::kAtn2, call.real(0), call.real(1)),
                                       {SqlType::Float}, call.anyNullable());
}

// DEGREES and RADIANS keep the kind of number that they are given; of a decimal they have 18
// decimals at least.
TypeSpec angleType(const TypeSpec& type) {
    if (!tsql::isDecimal(type.type)) return type;
    constexpr int kDecimals = 18;
    return tsql::decimalType(SqlType::Numeric, kMostDecimalDigits, std::max(kDecimals, type.scale));
}

BoundExpression converted(ScalarCall& call, double factor) {
    const TypeSpec type = angleType(argument(call).type);
    const BoundExpression result =
        BoundExpression::expression(sql::call(fn::kFloatMultiply, call.real(0),
                                              sql::Constant{factor}, TypeSpec{SqlType::Float}),
                                    {SqlType::Float}, call.anyNullable());
    return call.binder.castTo(result, type, 0, call.line);
}

BoundExpression degrees(ScalarCall& call) {
    return converted(call, 57.295779513082323);
}
BoundExpression radians(ScalarCall& call) {
    return converted(call, 0.017453292519943295);
}

BoundExpression random(ScalarCall& call) {
    if (call.arguments.empty() && call.binder.bindsComputedColumn()) {
        throw tsql::unsupported("RAND in a computed column", call.line);
    }
    if (call.arguments.empty()) {
        return BoundExpression::expression(sql::call(fn::kRandom), {SqlType::Float}, false);
    }
    return BoundExpression::expression(sql::call(fn::kRandom, call.integer(0)), {SqlType::Float},
                                       true);
}

BoundExpression isNumeric(ScalarCall& call) {
    if (tsql::isNumber(call[0].type.type)) {
        return BoundExpression::expression(sql::isNotNull(call[0].tree), {SqlType::Int}, false);
    }
    return BoundExpression::expression(sql::call(fn::kIsnumeric, call.text(0)), {SqlType::Int},
                                       false);
}

constexpr std::array kNumberFunctions = std::to_array<ScalarFunction>({
    {"abs", 1, 1, absolute},
    {"sign", 1, 1, sign},
    {"round", 2, 3, rounded},
    {"ceiling", 1, 1, ceiling},
    {"floor", 1, 1, floorFunction},
    {"power", 2, 2, power},
    {"sqrt", 1, 1, ofFloat<fn::kSqrt>},
    {"square", 1, 1, ofFloat<fn::kSquare>},
    {"exp", 1, 1, ofFloat<fn::kExp>},
    {"log", 1, 2, logarithm},
    {"log10", 1, 1, ofFloat<fn::kLog10>},
    {"sin", 1, 1, ofFloat<fn::kSin>},
    {"cos", 1, 1, ofFloat<fn::kCos>},
    {"tan", 1, 1, ofFloat<fn::kTan>},
    {"cot", 1, 1, ofFloat<fn::kCot>},
    {"asin", 1, 1, ofFloat<fn::kAsin>},
    {"acos", 1, 1, ofFloat<fn::kAcos>},
    {"atan", 1, 1, ofFloat<fn::kAtan>},
    {"atn2", 2, 2, angleOf},
    {"degrees", 1, 1, degrees},
    {"radians", 1, 1, radians},
    {"rand", 0, 1, random},
    {"pi", 0, 0, pi},
    {"isnumeric", 1, 1, isNumeric},
});

}  // namespace

std::span<const ScalarFunction> numberFunctions() {
    return kNumberFunctions;
}

}  // namespace kap::engine
