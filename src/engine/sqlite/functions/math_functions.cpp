#include <algorithm>
#include <cmath>
#include <random>

#include "base/power.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

[[noreturn]] void invalidOperation() {
    throw tsql::ServerError(tsql::Message::InvalidFloatingPoint);
}

Value floatResult(double value) {
    if (std::isnan(value)) invalidOperation();
    return fitApproximate(value, {tsql::SqlType::Float});
}

// kap_abs(value, type)
Value absolute(const Arguments& arguments) {
    const Wide value = arguments.exact(0);
    const tsql::TypeSpec type = arguments.type(1);
    return fitWide(value < 0 ? -value : value, storedScale(type), type, Rounding::Truncate,
                   "expression");
}

// kap_sign(value, type): one in the type's own scale.
Value sign(const Arguments& arguments) {
    const Wide value = arguments.exact(0);
    const tsql::TypeSpec type = arguments.type(1);
    const Wide one = powerOfTen(storedScale(type));
    return exactValue(value == 0 ? Wide{0} : value > 0 ? one : -one, type);
}

Value floatSign(const Arguments& arguments) {
    const double value = arguments.real(0);
    return value == 0 ? 0.0 : value > 0 ? 1.0 : -1.0;
}

// kap_round(value, digits, truncate, type): the type stays, digits beyond become zero.
Value roundFunction(const Arguments& arguments) {
    const tsql::TypeSpec type = arguments.type(3);
    const int scale = storedScale(type);
    const int digits =
        static_cast<int>(std::clamp<std::int64_t>(arguments.integer(1), -kMaxPower, scale));
    const Rounding rounding = arguments.integer(2) == 0 ? Rounding::HalfAway : Rounding::Truncate;
    const auto rounded = rescale(arguments.exact(0), scale, digits, rounding);
    const auto restored = rescale(*rounded, digits, scale, rounding);
    if (!restored) overflow("expression", messageName(type));
    return fitWide(*restored, scale, type, Rounding::Truncate, "expression");
}

// kap_float_round(value, digits, truncate)
Value floatRound(const Arguments& arguments) {
    constexpr std::int64_t kMostDigits = 300;
    const double value = arguments.real(0);
    const auto digits =
        static_cast<int>(std::clamp(arguments.integer(1), -kMostDigits, kMostDigits));
    const double power = kap::powerOfTen(std::abs(digits));
    const double scaled = digits >= 0 ? value * power : value / power;
    if (!std::isfinite(scaled)) return value;
    const double whole = arguments.integer(2) == 0 ? std::round(scaled) : std::trunc(scaled);
    return digits >= 0 ? whole / power : whole * power;
}

// A result in the form of the first argument.
Value alike(const Arguments& arguments, Wide value) {
    if (arguments.kind(0) == SQLITE_BLOB) return wideBytes(value);
    return static_cast<std::int64_t>(value);
}

// kap_ceiling(value, scale) and kap_floor(value, scale): a whole number of scale 0.
Value ceiling(const Arguments& arguments) {
    const Wide value = arguments.exact(0);
    const Wide power = powerOfTen(arguments.small(1));
    const Wide quotient = value / power;
    return alike(arguments, value % power > 0 ? quotient + 1 : quotient);
}

Value floorFunction(const Arguments& arguments) {
    const Wide value = arguments.exact(0);
    const Wide power = powerOfTen(arguments.small(1));
    const Wide quotient = value / power;
    return alike(arguments, value % power < 0 ? quotient - 1 : quotient);
}

Value floatCeiling(const Arguments& arguments) {
    return std::ceil(arguments.real(0));
}
Value floatFloor(const Arguments& arguments) {
    return std::floor(arguments.real(0));
}
Value floatAbsolute(const Arguments& arguments) {
    return std::abs(arguments.real(0));
}

Value power(const Arguments& arguments) {
    return floatResult(kap::power(arguments.real(0), arguments.real(1)));
}

Value squareRoot(const Arguments& arguments) {
    return floatResult(std::sqrt(arguments.real(0)));
}
Value square(const Arguments& arguments) {
    return floatResult(arguments.real(0) * arguments.real(0));
}
Value exponential(const Arguments& arguments) {
    return floatResult(std::exp(arguments.real(0)));
}

Value logarithm(const Arguments& arguments) {
    if (arguments.real(0) <= 0) invalidOperation();
    return floatResult(std::log(arguments.real(0)));
}

// kap_log(value, base)
Value logarithmOf(const Arguments& arguments) {
    const double base = arguments.real(1);
    if (arguments.real(0) <= 0 || base <= 0 || base == 1) invalidOperation();
    // The two usual bases have functions that are exact where the result is whole.
    if (base == 2) return floatResult(std::log2(arguments.real(0)));
    if (base == 10) return floatResult(std::log10(arguments.real(0)));
    return floatResult(std::log(arguments.real(0)) / std::log(base));
}

Value logarithm10(const Arguments& arguments) {
    if (arguments.real(0) <= 0) invalidOperation();
    return floatResult(std::log10(arguments.real(0)));
}

// A function of one float, as the C++ library has it.
template <double (*kFunction)(double)>
Value ofOne(const Arguments& arguments) {
    return floatResult(kFunction(arguments.real(0)));
}

double cotangent(double angle) {
    if (angle == 0) invalidOperation();
    return 1 / std::tan(angle);
}

Value angleOf(const Arguments& arguments) {
    return floatResult(std::atan2(arguments.real(0), arguments.real(1)));
}

// kap_random(seed): the same number for the same seed.
Value seededRandom(const Arguments& arguments) {
    std::minstd_rand generator(static_cast<std::uint32_t>(arguments.integer(0)));
    return std::uniform_real_distribution<double>(0, 1)(generator);
}

Value randomNumber(const Arguments& /*arguments*/) {
    thread_local std::minstd_rand generator(std::random_device{}());
    return std::uniform_real_distribution<double>(0, 1)(generator);
}

}  // namespace

void registerMathFunctions(Registrar& registrar) {
    registrar.scalar("kap_abs", 2, absolute);
    registrar.scalar("kap_sign", 2, sign);
    registrar.scalar("kap_round", 4, roundFunction);
    registrar.scalar("kap_ceiling", 2, ceiling);
    registrar.scalar("kap_floor", 2, floorFunction);
    registrar.scalar("kap_float_abs", 1, floatAbsolute);
    registrar.scalar("kap_float_sign", 1, floatSign);
    registrar.scalar("kap_float_round", 3, floatRound);
    registrar.scalar("kap_float_ceiling", 1, floatCeiling);
    registrar.scalar("kap_float_floor", 1, floatFloor);
    registrar.scalar("kap_power", 2, power);
    registrar.scalar("kap_sqrt", 1, squareRoot);
    registrar.scalar("kap_square", 1, square);
    registrar.scalar("kap_exp", 1, exponential);
    registrar.scalar("kap_log", 1, logarithm);
    registrar.scalar("kap_log", 2, logarithmOf);
    registrar.scalar("kap_log10", 1, logarithm10);
    registrar.scalar("kap_sin", 1, ofOne<std::sin>);
    registrar.scalar("kap_cos", 1, ofOne<std::cos>);
    registrar.scalar("kap_tan", 1, ofOne<std::tan>);
    registrar.scalar("kap_cot", 1, ofOne<cotangent>);
    registrar.scalar("kap_asin", 1, ofOne<std::asin>);
    registrar.scalar("kap_acos", 1, ofOne<std::acos>);
    registrar.scalar("kap_atan", 1, ofOne<std::atan>);
    registrar.scalar("kap_atn2", 2, angleOf);
    registrar.scalar("kap_random", 1, seededRandom);
    registrar.scalar("kap_random", 0, randomNumber, OnNull::Call, Stability::PerCall);
}

}  // namespace kap::engine
