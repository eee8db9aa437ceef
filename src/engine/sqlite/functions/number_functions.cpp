#include <cmath>

#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/convert.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

[[noreturn]] void divisionByZero() {
    throw tsql::ServerError(tsql::Message::DivideByZero);
}

// The result of an exact operation, already in the scale of its type.
Value exactResult(Wide value, const tsql::TypeSpec& type) {
    return fitWide(value, storedScale(type), type, Rounding::Truncate, "expression");
}

Value sumResult(Wide left, Wide right, const tsql::TypeSpec& type) {
    const auto sum = sumOf(left, right);
    if (!sum) overflow("expression", messageName(type));
    return exactResult(*sum, type);
}

// kap_add(left, right, type), both in the scale of the type.
Value add(const Arguments& arguments) {
    return sumResult(arguments.exact(0), arguments.exact(1), arguments.type(2));
}

Value subtract(const Arguments& arguments) {
    return sumResult(arguments.exact(0), -arguments.exact(1), arguments.type(2));
}

bool isMinus(std::string_view signs, int index) {
    return signs[static_cast<std::size_t>(index)] == '-';
}

// kap_accumulate(type, signs, first, second...): a sum of any length; each sign says how its
// operand counts. Every step is checked, as if it stood alone.
Value accumulate(const Arguments& arguments) {
    const tsql::TypeSpec type = arguments.type(0);
    const std::string_view signs = arguments.text(1);
    Value total = std::int64_t{0};
    for (int i = 2; i < arguments.count(); ++i) {
        const Wide before = exactOf(total);
        const Wide operand = arguments.exact(i);
        total = sumResult(before, isMinus(signs, i - 2) ? -operand : operand, type);
    }
    return total;
}

Value floatAccumulate(const Arguments& arguments) {
    const tsql::TypeSpec type = arguments.type(0);
    const std::string_view signs = arguments.text(1);
    double total = 0;
    for (int i = 2; i < arguments.count(); ++i) {
        const double operand = arguments.real(i);
        total = fitApproximate(isMinus(signs, i - 2) ? total - operand : total + operand, type);
    }
    return total;
}

// kap_multiply(left, right, scale, type): `scale` is that of the plain product.
Value multiplyFunction(const Arguments& arguments) {
    const tsql::TypeSpec type = arguments.type(3);
    const Wide left = arguments.exact(0);
    const Wide right = arguments.exact(1);
    const int scale = arguments.small(2);
    if (const auto product = multiply(left, right)) {
        return fitWide(*product, scale, type, Rounding::HalfAway, "expression");
    }
    const auto product = productWithout(left, right, scale - storedScale(type), Rounding::HalfAway);
    if (!product) overflow("expression", messageName(type));
    return exactResult(*product, type);
}

// kap_divide(left, right, shift, type): left / right with `shift` decimal digits more than the
// plain quotient. Digits beyond are cut, not rounded: so the server divides.
Value divideFunction(const Arguments& arguments) {
    const tsql::TypeSpec type = arguments.type(3);
    const int shift = arguments.small(2);
    const Wide left = arguments.exact(0);
    const Wide right = arguments.exact(1);
    if (right == 0) divisionByZero();
    if (shift >= 0 && shift <= kMaxPower) {
        if (const auto shifted = multiply(left, powerOfTen(shift))) {
            return exactResult(divide(*shifted, right, Rounding::Truncate), type);
        }
    }
    const auto quotient = quotientWith(left, shift, right);
    if (!quotient) overflow("expression", messageName(type));
    return exactResult(*quotient, type);
}

Value modulo(const Arguments& arguments) {
    const Wide divisor = arguments.exact(1);
    if (divisor == 0) divisionByZero();
    return exactResult(arguments.exact(0) % divisor, arguments.type(2));
}

Value negate(const Arguments& arguments) {
    return exactResult(-arguments.exact(0), arguments.type(1));
}

// kap_float_...(left, right, type)
Value floatAdd(const Arguments& arguments) {
    return fitApproximate(arguments.real(0) + arguments.real(1), arguments.type(2));
}

Value floatSubtract(const Arguments& arguments) {
    return fitApproximate(arguments.real(0) - arguments.real(1), arguments.type(2));
}

Value floatMultiply(const Arguments& arguments) {
    return fitApproximate(arguments.real(0) * arguments.real(1), arguments.type(2));
}

Value floatDivide(const Arguments& arguments) {
    if (arguments.real(1) == 0) divisionByZero();
    return fitApproximate(arguments.real(0) / arguments.real(1), arguments.type(2));
}

Value bitXor(const Arguments& arguments) {
    return arguments.integer(0) ^ arguments.integer(1);
}

}  // namespace

void registerNumberFunctions(Registrar& registrar) {
    registrar.scalar("kap_add", 3, add);
    registrar.scalar("kap_subtract", 3, subtract);
    registrar.scalar("kap_accumulate", -1, accumulate);
    registrar.scalar("kap_float_accumulate", -1, floatAccumulate);
    registrar.scalar("kap_multiply", 4, multiplyFunction);
    registrar.scalar("kap_divide", 4, divideFunction);
    registrar.scalar("kap_modulo", 3, modulo);
    registrar.scalar("kap_negate", 2, negate);
    registrar.scalar("kap_float_add", 3, floatAdd);
    registrar.scalar("kap_float_subtract", 3, floatSubtract);
    registrar.scalar("kap_float_multiply", 3, floatMultiply);
    registrar.scalar("kap_float_divide", 3, floatDivide);
    registrar.scalar("kap_xor", 2, bitXor);
}

}  // namespace kap::engine
