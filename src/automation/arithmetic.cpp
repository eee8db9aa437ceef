#include <kaputil/automation/arithmetic.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/decimal_arithmetic.hpp"
#include "base/power.hpp"

namespace kap::arithmetic {
namespace {

[[noreturn]] void raise(std::int32_t number) {
    throw AutomationError(number);
}

// Where an operand's type stands among the others: of two, the higher one gives the result's type.
enum class Rank { Byte, Integer, Long, Single, Double, Currency, Date, Decimal };

Rank rankOf(const Variant& value) {
    switch (value.type()) {
        case VarType::Byte:
            return Rank::Byte;
        case VarType::Empty:
        case VarType::Boolean:
        case VarType::Integer:
            return Rank::Integer;
        case VarType::Long:
            return Rank::Long;
        case VarType::Single:
            return Rank::Single;
        case VarType::Double:
        case VarType::String:
            return Rank::Double;
        case VarType::Currency:
            return Rank::Currency;
        case VarType::Date:
            return Rank::Date;
        case VarType::Decimal:
            return Rank::Decimal;
        default:
            raise(errors::kTypeMismatch);
    }
}

// Both operands without objects, and the higher of their ranks.
struct Operands {
    Variant left;
    Variant right;
    bool null = false;
    Rank rank = Rank::Byte;

    [[nodiscard]] bool both(VarType type) const {
        return left.type() == type && right.type() == type;
    }
    [[nodiscard]] bool has(VarType type) const {
        return left.type() == type || right.type() == type;
    }
};

Rank commonRank(const Operands& operands) {
    const Variant& left = operands.left;
    const Variant& right = operands.right;
    if (operands.both(VarType::Byte) ||
        (operands.has(VarType::Byte) && operands.has(VarType::Empty))) {
        return Rank::Byte;  // Empty does not widen
    }
    const Rank rank = std::max(rankOf(left), rankOf(right));
    return rank == Rank::Single && operands.has(VarType::Long) ? Rank::Double : rank;
}

Operands prepare(const Variant& left, const Variant& right) {
    Operands operands{convert::plainValue(left), convert::plainValue(right)};
    operands.null = operands.left.isNull() || operands.right.isNull();
    if (!operands.null) {
        operands.rank = commonRank(operands);
    }
    return operands;
}

double finite(double value) {
    if (!std::isfinite(value)) {
        raise(errors::kOverflow);
    }
    return value;
}

Variant singleOrDouble(double value) {
    const auto narrow = static_cast<float>(value);
    return std::isfinite(narrow) ? Variant(narrow) : Variant(finite(value));
}

template <class Whole>
bool fits(std::int64_t value) {
    return value >= std::numeric_limits<Whole>::min() && value <= std::numeric_limits<Whole>::max();
}

// A whole number in its type, or in the first wider one that holds it.
Variant wholeNumber(std::int64_t value, Rank rank) {
    if (rank == Rank::Byte && fits<std::uint8_t>(value)) {
        return static_cast<std::uint8_t>(value);
    }
    if (rank <= Rank::Integer && fits<std::int16_t>(value)) {
        return static_cast<std::int16_t>(value);
    }
    if (fits<std::int32_t>(value)) {
        return static_cast<std::int32_t>(value);
    }
    return static_cast<double>(value);
}

Variant currencyOf(const std::optional<Decimal>& value) {
    const auto scaled = value ? value->scaledTo(4) : std::nullopt;
    if (!scaled) {
        raise(errors::kOverflow);
    }
    return Currency{*scaled};
}

Variant decimalOf(const std::optional<Decimal>& value) {
    if (!value) {
        raise(errors::kOverflow);
    }
    return *value;
}

Decimal currencyAmount(const Variant& value) {
    return {convert::toCurrency(value).scaled, 4};
}

Variant dateOf(double days) {
    return convert::toDate(Variant(days));  // raises 6 outside the calendar
}

// The sum of the operands, the right one's sign changed by `sign` -1.
Variant sum(const Operands& operands, int sign) {
    const Variant& left = operands.left;
    const Variant& right = operands.right;
    const auto signedDecimal = [sign](const Decimal& value) {
        return sign < 0 ? decimal::negate(value) : value;
    };
    switch (operands.rank) {
        case Rank::Byte:
        case Rank::Integer:
        case Rank::Long:
            return wholeNumber(
                std::int64_t{convert::toLong(left)} + std::int64_t{sign} * convert::toLong(right),
                operands.rank);
        case Rank::Currency:
            return currencyOf(
                decimal::add(currencyAmount(left), signedDecimal(currencyAmount(right))));
        case Rank::Decimal:
            return decimalOf(
                decimal::add(convert::toDecimal(left), signedDecimal(convert::toDecimal(right))));
        default:
            break;
    }
    const double real = convert::toDouble(left) + sign * convert::toDouble(right);
    if (operands.rank == Rank::Single) {
        return singleOrDouble(real);
    }
    const bool span = sign < 0 && operands.both(VarType::Date);
    return operands.rank == Rank::Date && !span ? dateOf(real) : Variant(finite(real));
}

Variant product(const Operands& operands) {
    const Variant& left = operands.left;
    const Variant& right = operands.right;
    if (operands.rank <= Rank::Long) {
        return wholeNumber(std::int64_t{convert::toLong(left)} * convert::toLong(right),
                           operands.rank);
    }
    if (operands.rank == Rank::Decimal) {
        return decimalOf(decimal::multiply(convert::toDecimal(left), convert::toDecimal(right)));
    }
    const bool real = operands.has(VarType::Single) || operands.has(VarType::Double) ||
                      operands.has(VarType::String);
    if (operands.rank == Rank::Currency && !real) {
        return currencyOf(decimal::multiply(convert::toDecimal(left), convert::toDecimal(right)));
    }
    const double value = convert::toDouble(left) * convert::toDouble(right);
    return operands.rank == Rank::Single ? singleOrDouble(value) : Variant(finite(value));
}

Variant quotient(const Operands& operands) {
    const double divisor = convert::toDouble(operands.right);
    const double dividend = convert::toDouble(operands.left);
    if (divisor == 0) {
        raise(dividend == 0 ? errors::kOverflow : errors::kDivisionByZero);
    }
    if (operands.rank == Rank::Decimal) {
        return decimalOf(
            decimal::divide(convert::toDecimal(operands.left), convert::toDecimal(operands.right)));
    }
    const double value = dividend / divisor;
    return operands.rank == Rank::Single ? singleOrDouble(value) : Variant(finite(value));
}

// Both operands as whole numbers for the two operations on them.
struct WholeOperands {
    std::int64_t left;
    std::int64_t right;
    Rank rank;
};

WholeOperands wholeOperands(const Operands& operands) {
    const WholeOperands whole{convert::toLong(operands.left), convert::toLong(operands.right),
                              std::min(operands.rank, Rank::Long)};
    if (whole.right == 0) {
        raise(errors::kDivisionByZero);
    }
    return whole;
}

int signOf(double difference) {
    return difference < 0 ? -1 : difference > 0 ? 1 : 0;
}

int realOrder(const Operands& operands) {
    return signOf(convert::toDouble(operands.left) - convert::toDouble(operands.right));
}

// A double beyond the decimals is beyond every amount, too.
int exactOrder(const Operands& operands) {
    const auto beyond = [](const Variant& value) {
        constexpr double kLargestDecimal = 7.9e28;
        return std::fabs(convert::toDouble(value)) > kLargestDecimal;
    };
    if (beyond(operands.left) || beyond(operands.right)) {
        return realOrder(operands);
    }
    return decimal::compare(convert::toDecimal(operands.left), convert::toDecimal(operands.right));
}

bool isText(const Variant& value) {
    return value.isString() || value.isEmpty();
}

}  // namespace

Variant add(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    if (operands.null) {
        return Variant::null();
    }
    if (operands.has(VarType::String) && isText(operands.left) && isText(operands.right)) {
        return concatenate(operands.left, operands.right);
    }
    return sum(operands, 1);
}

Variant subtract(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    return operands.null ? Variant::null() : sum(operands, -1);
}

Variant multiply(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    return operands.null ? Variant::null() : product(operands);
}

Variant divide(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    return operands.null ? Variant::null() : quotient(operands);
}

Variant integerDivide(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    if (operands.null) {
        return Variant::null();
    }
    const WholeOperands whole = wholeOperands(operands);
    return wholeNumber(whole.left / whole.right, whole.rank);
}

Variant modulo(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    if (operands.null) {
        return Variant::null();
    }
    const WholeOperands whole = wholeOperands(operands);
    return wholeNumber(whole.left % whole.right, whole.rank);
}

Variant power(const Variant& base, const Variant& exponent) {
    const Operands operands = prepare(base, exponent);
    if (operands.null) {
        return Variant::null();
    }
    const double left = convert::toDouble(operands.left);
    const double right = convert::toDouble(operands.right);
    const double value = kap::power(left, right);
    if (std::isnan(value) || (left == 0 && right < 0)) {
        raise(errors::kInvalidArgument);
    }
    return finite(value);
}

Variant negate(const Variant& value) {
    Variant plain = convert::plainValue(value);
    switch (plain.type()) {
        case VarType::Null:
            return plain;
        case VarType::Empty:
        case VarType::Boolean:
        case VarType::Byte:
        case VarType::Integer:
        case VarType::Long:
            return wholeNumber(-std::int64_t{convert::toLong(plain)},
                               std::max(rankOf(plain), Rank::Integer));
        case VarType::Single:
            return -plain.as<float>();
        case VarType::Currency:
            return currencyOf(decimal::negate(currencyAmount(plain)));
        case VarType::Decimal:
            return decimal::negate(plain.as<Decimal>());
        case VarType::Date:
            return dateOf(-plain.as<Date>().days);
        default:
            return -convert::toDouble(plain);
    }
}

Variant concatenate(const Variant& left, const Variant& right) {
    Variant first = convert::plainValue(left);
    const Variant second = convert::plainValue(right);
    if (first.isNull() && second.isNull()) {
        return first;
    }
    String joined = first.isNull() ? String() : convert::toString(first);
    if (!second.isNull()) {
        joined += convert::toString(second);
    }
    return joined;
}

std::optional<int> compare(const Variant& left, const Variant& right) {
    const Operands operands = prepare(left, right);
    if (operands.null) {
        return std::nullopt;
    }
    if (operands.has(VarType::String) && isText(operands.left) && isText(operands.right)) {
        const int order =
            convert::toString(operands.left).view().compare(convert::toString(operands.right));
        return signOf(order);
    }
    switch (operands.rank) {
        case Rank::Decimal:
        case Rank::Currency:
            return exactOrder(operands);
        default:
            return realOrder(operands);
    }
}

}  // namespace kap::arithmetic
