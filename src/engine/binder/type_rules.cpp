#include "engine/binder/type_rules.hpp"

#include <algorithm>

namespace kap::engine {

using tsql::BinaryOperator;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kMaxPrecision = 38;
constexpr int kLeastScale = 6;
constexpr int kMaxBytes = 8000;
constexpr int kMaxNationalLength = 4000;

int wider(int left, int right) {
    return left == tsql::kMaxLength || right == tsql::kMaxLength ? tsql::kMaxLength
                                                                 : std::max(left, right);
}

// Of two texts or binaries: one variable type when they differ in kind.
TypeSpec commonSized(const TypeSpec& left, const TypeSpec& right) {
    const TypeSpec& higher =
        tsql::factsOf(left.type).precedence >= tsql::factsOf(right.type).precedence ? left : right;
    TypeSpec result = higher;
    result.length = wider(left.length, right.length);
    if (left.type != right.type && (tsql::isPadded(left.type) || tsql::isPadded(right.type)) &&
        tsql::isPadded(result.type)) {
        result.type = tsql::isNational(result.type) ? SqlType::NVarChar
                      : tsql::isText(result.type)   ? SqlType::VarChar
                                                    : SqlType::VarBinary;
    }
    return result;
}

// What only brings decimals together gives up decimals where 38 digits do not hold them beside the
// whole part. A sum may have one digit more.
TypeSpec sumDecimal(int whole, int carry, int scale) {
    scale = std::min(scale, kMaxPrecision - std::min(whole, kMaxPrecision));
    const int precision = whole + carry + scale;
    return tsql::decimalType(SqlType::Numeric, std::min(precision, kMaxPrecision), scale);
}

// Whether 64 bits hold every number of a type.
bool isNarrow(const TypeSpec& type) {
    return !tsql::isWideDecimal(type) && type.precision <= tsql::kNarrowDigits;
}

// An operation whose result cannot leave 64 bits keeps that form, also where its digits would allow
// for more.
TypeSpec narrowed(TypeSpec type) {
    type.length = 0;
    return type;
}

TypeSpec commonDecimal(const TypeSpec& left, const TypeSpec& right) {
    const TypeSpec a = asDecimal(left);
    const TypeSpec b = asDecimal(right);
    const int scale = std::max(a.scale, b.scale);
    return sumDecimal(std::max(a.precision - a.scale, b.precision - b.scale), 0, scale);
}

}  // namespace

TypeSpec asDecimal(const TypeSpec& type) {
    if (!tsql::isInteger(type.type) && !tsql::isMoney(type.type)) return type;
    return {SqlType::Decimal, 0, tsql::precisionOf(type), tsql::scaleOf(type)};
}

TypeSpec boundedDecimal(int precision, int scale) {
    if (precision > kMaxPrecision) {
        const int whole = precision - scale;
        scale = std::max(std::min(scale, kMaxPrecision - whole), std::min(scale, kLeastScale));
        precision = kMaxPrecision;
    }
    return tsql::decimalType(SqlType::Numeric, precision, scale);
}

TypeSpec decimalResult(BinaryOperator op, const TypeSpec& left, const TypeSpec& right) {
    const TypeSpec a = asDecimal(left);
    const TypeSpec b = asDecimal(right);
    const int widerScale = std::max(a.scale, b.scale);
    switch (op) {
        case BinaryOperator::Multiply:
            return a.precision + b.precision <= tsql::kNarrowDigits && isNarrow(a) && isNarrow(b)
                       ? narrowed(boundedDecimal(a.precision + b.precision + 1, a.scale + b.scale))
                       : boundedDecimal(a.precision + b.precision + 1, a.scale + b.scale);
        case BinaryOperator::Divide: {
            const int scale = std::max(kLeastScale, a.scale + b.precision + 1);
            return boundedDecimal(a.precision - a.scale + b.scale + scale, scale);
        }
        case BinaryOperator::Modulo:
            return sumDecimal(std::min(a.precision - a.scale, b.precision - b.scale), 0,
                              widerScale);
        default: {
            const TypeSpec sum =
                sumDecimal(std::max(a.precision - a.scale, b.precision - b.scale), 1, widerScale);
            const bool small = sum.precision <= tsql::kNarrowDigits + 1;
            return small && isNarrow(a) && isNarrow(b) ? narrowed(sum) : sum;
        }
    }
}

TypeSpec commonType(const TypeSpec& left, const TypeSpec& right) {
    if (left == right) return left;
    const bool sized = (tsql::isText(left.type) && tsql::isText(right.type)) ||
                       (tsql::isBinary(left.type) && tsql::isBinary(right.type));
    if (sized) return commonSized(left, right);
    const TypeSpec& higher =
        tsql::factsOf(left.type).precedence >= tsql::factsOf(right.type).precedence ? left : right;
    const TypeSpec& lower = &higher == &left ? right : left;
    if (tsql::isFineDate(higher.type) && tsql::isDate(lower.type)) {
        TypeSpec result = higher;
        result.scale = std::max(tsql::scaleOf(left), tsql::scaleOf(right));
        return result;
    }
    if (tsql::isDecimal(higher.type) && tsql::isExact(lower.type))
        return commonDecimal(left, right);
    // A text next to bytes must have room for them all.
    if (tsql::isText(higher.type) && tsql::isBinary(lower.type)) {
        TypeSpec result = higher;
        result.length = wider(left.length, right.length);
        return result;
    }
    return higher;
}

std::optional<TypeSpec> commonType(const std::vector<BoundExpression>& values) {
    std::optional<TypeSpec> result;
    for (const BoundExpression& value : values) {
        if (value.nullLiteral) continue;
        result = result ? commonType(*result, value.type) : value.type;
    }
    return result;
}

TypeSpec textTypeOf(const TypeSpec& type) {
    constexpr int kDateLength = 27;
    constexpr int kIdentifierLength = 36;
    constexpr int kFloatLength = 24;
    constexpr int kMoneyLength = 24;
    if (tsql::isText(type.type)) {
        return {tsql::isNational(type.type) ? SqlType::NVarChar : SqlType::VarChar, type.length};
    }
    int length = type.length;
    if (tsql::isMoney(type.type)) {
        length = kMoneyLength;
    } else if (tsql::isExact(type.type)) {
        // Digits, a sign, a point and a zero before it.
        length = asDecimal(type).precision + (tsql::isDecimal(type.type) ? 3 : 2);
    } else if (tsql::isApproximate(type.type)) {
        length = kFloatLength;
    } else if (tsql::isFineDate(type.type)) {
        length = tsql::precisionOf(type);
    } else if (tsql::isDate(type.type)) {
        length = kDateLength;
    } else if (type.type == SqlType::UniqueIdentifier) {
        length = kIdentifierLength;
    }
    return {SqlType::VarChar, length};
}

TypeSpec joinedType(const TypeSpec& left, const TypeSpec& right) {
    const bool national = tsql::isNational(left.type) || tsql::isNational(right.type);
    const bool binary = tsql::isBinary(left.type);
    const int limit = national ? kMaxNationalLength : kMaxBytes;
    const bool unbounded = left.length == tsql::kMaxLength || right.length == tsql::kMaxLength;
    const int length = unbounded ? tsql::kMaxLength : std::min(left.length + right.length, limit);
    return {binary ? SqlType::VarBinary : national ? SqlType::NVarChar : SqlType::VarChar, length};
}

bool needsConversion(const TypeSpec& from, const TypeSpec& to) {
    if (from == to) return false;
    const bool roomier = to.length == tsql::kMaxLength ||
                         (from.length != tsql::kMaxLength && from.length <= to.length);
    if (tsql::isText(from.type) && tsql::isText(to.type)) {
        const bool losesLetters = tsql::isNational(from.type) && !tsql::isNational(to.type);
        return tsql::isPadded(to.type) || !roomier || losesLetters;
    }
    if (tsql::isBinary(from.type) && tsql::isBinary(to.type)) {
        return tsql::isPadded(to.type) || to.type == SqlType::Timestamp || !roomier;
    }
    const bool widerInteger =
        tsql::isInteger(from.type) && tsql::isInteger(to.type) &&
        tsql::factsOf(from.type).precedence < tsql::factsOf(to.type).precedence;
    if (widerInteger) return false;
    if (tsql::isDecimal(from.type) && tsql::isDecimal(to.type)) {
        return from.scale != to.scale || from.precision > to.precision ||
               tsql::isWideDecimal(from) != tsql::isWideDecimal(to);
    }
    // Fine dates are kept with all decimals.
    if (tsql::isFineDate(to.type)) return from.type != to.type || to.scale < from.scale;
    if (from.type == SqlType::SmallMoney && to.type == SqlType::Money) return false;
    if (from.type == SqlType::Real && to.type == SqlType::Float) return false;
    return !(tsql::isDate(from.type) && to.type == SqlType::DateTime &&
             from.type == SqlType::SmallDateTime);
}

}  // namespace kap::engine
