#include <algorithm>
#include <array>

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

BoundExpression result(const BoundExpression& source, std::string sql, TypeSpec type) {
    return BoundExpression::expression(std::move(sql), type, source.nullable);
}

BoundExpression absolute(ScalarCall& call) {
    const BoundExpression value = argument(call);
    if (tsql::isApproximate(value.type.type))
        return result(value, callText("kap_float_abs", value.sql), value.type);
    return result(value, callText("kap_abs", value.sql, typeArgument(value.type)), value.type);
}

BoundExpression sign(ScalarCall& call) {
    const BoundExpression value = argument(call);
    if (tsql::isApproximate(value.type.type))
        return result(value, callText("kap_float_sign", value.sql), value.type);
    return result(value, callText("kap_sign", value.sql, typeArgument(value.type)), value.type);
}

BoundExpression rounded(ScalarCall& call) {
    const BoundExpression value = argument(call);
    const std::string truncate = call.arguments.size() > 2 ? call.integer(2) : "0";
    const bool nullable = call.anyNullable();
    const std::string sql =
        tsql::isApproximate(value.type.type)
            ? callText("kap_float_round", value.sql, call.integer(1), truncate)
            : callText("kap_round", value.sql, call.integer(1), truncate, typeArgument(value.type));
    return BoundExpression::expression(sql, value.type, nullable);
}

// A whole number in the type of the argument; decimals lose their fraction, money keeps its own.
BoundExpression towards(ScalarCall& call, const char* exactFunction, const char* floatFunction) {
    BoundExpression value = argument(call);
    if (tsql::isApproximate(value.type.type))
        return result(value, callText(floatFunction, value.sql), value.type);
    const int scale = storedScale(value.type);
    if (scale == 0) return value;
    const std::string whole = callText(exactFunction, value.sql, plain::text(scale));
    if (tsql::isMoney(value.type.type)) {
        return result(value,
                      callText("kap_add", callText("kap_scale", whole, plain::text(scale)), "0",
                               typeArgument(value.type)),
                      value.type);
    }
    TypeSpec type = value.type;
    type.type = SqlType::Numeric;
    type.scale = 0;
    return result(value, whole, type);
}

BoundExpression ceiling(ScalarCall& call) {
    return towards(call, "kap_ceiling", "kap_float_ceiling");
}
BoundExpression floorFunction(ScalarCall& call) {
    return towards(call, "kap_floor", "kap_float_floor");
}

// The result has the type of the base: POWER(2, 0.5) is 1. A decimal keeps its decimals and may
// become as large as one can be.
BoundExpression power(ScalarCall& call) {
    TypeSpec type = argument(call).type;
    if (tsql::isDecimal(type.type)) {
        type = tsql::decimalType(SqlType::Numeric, kMostDecimalDigits, type.scale);
    }
    const BoundExpression value = BoundExpression::expression(
        callText("kap_power", call.real(0), call.real(1)), {SqlType::Float}, call.anyNullable());
    return call.binder.castTo(value, type, 0, call.line);
}

// LOG(x) is the natural one, LOG(x, base) any other.
BoundExpression logarithm(ScalarCall& call) {
    const std::string sql = call.arguments.size() > 1
                                ? callText("kap_log", call.real(0), call.real(1))
                                : callText("kap_log", call.real(0));
    return BoundExpression::expression(sql, {SqlType::Float}, call.anyNullable());
}

template <const char* const& kFunction>
BoundExpression ofFloat(ScalarCall& call) {
    return BoundExpression::expression(callText(kFunction, call.real(0)), {SqlType::Float},
                                       call.anyNullable());
}

constexpr const char* kSquareRoot = "kap_sqrt";
constexpr const char* kSquare = "kap_square";
constexpr const char* kExponential = "kap_exp";
constexpr const char* kLogarithm10 = "kap_log10";
constexpr const char* kSine = "kap_sin";
constexpr const char* kCosine = "kap_cos";
constexpr const char* kTangent = "kap_tan";
constexpr const char* kCotangent = "kap_cot";
constexpr const char* kArcSine = "kap_asin";
constexpr const char* kArcCosine = "kap_acos";
constexpr const char* kArcTangent = "kap_atan";

BoundExpression pi(ScalarCall& /*call*/) {
    return BoundExpression::literal(3.141592653589793, {SqlType::Float});
}

BoundExpression angleOf(ScalarCall& call) {
    return BoundExpression::expression(callText("kap_atn2", call.real(0), call.real(1)),
                                       {SqlType::Float}, call.anyNullable());
}

// DEGREES and RADIANS keep the kind of number that they are given; of a decimal they have 18
// decimals at least.
TypeSpec angleType(const TypeSpec& type) {
    if (!tsql::isDecimal(type.type)) return type;
    constexpr int kDecimals = 18;
    return tsql::decimalType(SqlType::Numeric, kMostDecimalDigits, std::max(kDecimals, type.scale));
}

BoundExpression converted(ScalarCall& call, const char* factor) {
    const TypeSpec type = angleType(argument(call).type);
    const BoundExpression result = BoundExpression::expression(
        callText("kap_float_multiply", call.real(0), factor, typeArgument({SqlType::Float})),
        {SqlType::Float}, call.anyNullable());
    return call.binder.castTo(result, type, 0, call.line);
}

BoundExpression degrees(ScalarCall& call) {
    return converted(call, "57.295779513082323");
}
BoundExpression radians(ScalarCall& call) {
    return converted(call, "0.017453292519943295");
}

BoundExpression random(ScalarCall& call) {
    if (call.arguments.empty() && call.binder.bindsComputedColumn()) {
        throw tsql::unsupported("RAND in a computed column", call.line);
    }
    const std::string seed = call.arguments.empty() ? "" : call.integer(0);
    return BoundExpression::expression("kap_random(" + seed + ")", {SqlType::Float}, !seed.empty());
}

BoundExpression isNumeric(ScalarCall& call) {
    if (tsql::isNumber(call[0].type.type)) {
        return BoundExpression::expression("(" + call[0].sql + " IS NOT NULL)", {SqlType::Int},
                                           false);
    }
    return BoundExpression::expression(callText("kap_isnumeric", call.text(0)), {SqlType::Int},
                                       false);
}

constexpr std::array kNumberFunctions = std::to_array<ScalarFunction>({
    {"abs", 1, 1, absolute},
    {"sign", 1, 1, sign},
    {"round", 2, 3, rounded},
    {"ceiling", 1, 1, ceiling},
    {"floor", 1, 1, floorFunction},
    {"power", 2, 2, power},
    {"sqrt", 1, 1, ofFloat<kSquareRoot>},
    {"square", 1, 1, ofFloat<kSquare>},
    {"exp", 1, 1, ofFloat<kExponential>},
    {"log", 1, 2, logarithm},
    {"log10", 1, 1, ofFloat<kLogarithm10>},
    {"sin", 1, 1, ofFloat<kSine>},
    {"cos", 1, 1, ofFloat<kCosine>},
    {"tan", 1, 1, ofFloat<kTangent>},
    {"cot", 1, 1, ofFloat<kCotangent>},
    {"asin", 1, 1, ofFloat<kArcSine>},
    {"acos", 1, 1, ofFloat<kArcCosine>},
    {"atan", 1, 1, ofFloat<kArcTangent>},
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
