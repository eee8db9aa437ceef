#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/values/convert_families.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::BinaryOperator;
using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

const char* operatorName(BinaryOperator op) {
    switch (op) {
        case BinaryOperator::Add:
            return "add";
        case BinaryOperator::Subtract:
            return "subtract";
        case BinaryOperator::Multiply:
            return "multiply";
        case BinaryOperator::Divide:
            return "divide";
        case BinaryOperator::Modulo:
            return "modulo";
        case BinaryOperator::BitAnd:
            return "'&'";
        case BinaryOperator::BitOr:
            return "'|'";
        case BinaryOperator::BitXor:
            return "'^'";
    }
    return "";
}

bool isBitwise(BinaryOperator op) {
    return op >= BinaryOperator::BitAnd;
}

[[noreturn]] void incompatible(BinaryOperator op, const TypeSpec& left, const TypeSpec& right,
                               int line) {
    throw ServerError(tsql::Message::IncompatibleTypes,
                      {tsql::typeName(left.type), tsql::typeName(right.type), operatorName(op)},
                      line);
}

[[noreturn]] void invalidOperand(const std::string& operation, const TypeSpec& type, int line) {
    throw ServerError(tsql::Message::InvalidOperandType, {tsql::typeName(type.type), operation},
                      line);
}

// A whole-number literal among decimals has as many digits as are written.
TypeSpec decimalOperand(const BoundExpression& value) {
    if (value.constant() == nullptr || !tsql::isInteger(value.type.type)) return value.type;
    int digits = 1;
    for (auto rest = std::get<std::int64_t>(*value.constant()) / 10; rest != 0; rest /= 10)
        ++digits;
    return {SqlType::Numeric, 0, digits, 0};
}

// A sql_variant has to be converted before anything is computed with it.
void refuseVariants(BinaryOperator op, const TypeSpec& left, const TypeSpec& right, int line) {
    const bool leftIs = tsql::isVariant(left.type);
    const bool rightIs = tsql::isVariant(right.type);
    if (!leftIs && !rightIs) return;
    if (leftIs && rightIs) invalidOperand(operatorName(op), left, line);
    const TypeSpec& other = leftIs ? right : left;
    if (tsql::isText(other.type) || tsql::isBinary(other.type)) {
        incompatible(op, left, right, line);
    }
    throw ServerError(tsql::Message::ImplicitConversionNotAllowed,
                      {"sql_variant", tsql::typeName(other.type)}, line);
}

bool nullable(const BoundExpression& left, const BoundExpression& right) {
    return left.nullable || right.nullable;
}

bool isSum(BinaryOperator op) {
    return op == BinaryOperator::Add || op == BinaryOperator::Subtract;
}

// A sum goes on with what stands before it, and in a new one where that has so many terms already:
// a function takes at most 127 arguments.
BoundExpression sum(BinaryOperator op, const BoundExpression& left, const BoundExpression& right,
                    const TypeSpec& type, int scale) {
    constexpr std::size_t kMostTerms = 100;
    sql::Sum result{type, scale, {}};
    const auto* before = left.chain.as<sql::Sum>();
    const bool continues = before != nullptr && before->terms.size() < kMostTerms &&
                           (left.type == type || tsql::isDecimal(left.type.type));
    if (continues) {
        result.terms.reserve(before->terms.size() + 1);
        result.terms = before->terms;
    } else {
        result.terms.reserve(2);
        result.terms.push_back({false, left.tree, storedScale(left.type)});
    }
    const bool minus = op == BinaryOperator::Subtract;
    result.terms.push_back({minus, right.tree, storedScale(right.type)});
    BoundExpression value =
        BoundExpression::expression(std::move(result), type, nullable(left, right));
    value.chain = value.tree;
    return value;
}

BoundExpression modulo(const BoundExpression& left, const BoundExpression& right,
                       const TypeSpec& type, int scale) {
    const auto operand = [&](const BoundExpression& value) {
        return sql::scaled({false, value.tree, storedScale(value.type)}, scale);
    };
    return BoundExpression::expression(sql::call(fn::kModulo, operand(left), operand(right), type),
                                       type, nullable(left, right));
}

}  // namespace

BoundExpression Binder::negated(const BoundExpression& operand, int line) {
    if (operand.nullLiteral) return operand;
    TypeSpec type = operand.type;
    if (tsql::isApproximate(type.type)) {
        if (const Value* constant = operand.constant())
            return BoundExpression::literal(-std::get<double>(*constant), type);
        return BoundExpression::expression(sql::Unary{sql::UnaryOperator::Minus, operand.tree},
                                           type, operand.nullable);
    }
    if (!tsql::isExact(type.type) || type.type == SqlType::Bit) invalidOperand("minus", type, line);
    if (type.type == SqlType::TinyInt) type = {SqlType::SmallInt};
    if (const Value* constant = operand.constant()) {
        try {
            // The lowest bigint has no counterpart.
            return BoundExpression::literal(fitWide(-exactOf(*constant), storedScale(type), type,
                                                    Rounding::Truncate, "expression"),
                                            type);
        } catch (const ServerError& error) {
            throw error.at(line);
        }
    }
    return BoundExpression::expression(sql::call(fn::kNegate, operand.tree, type), type,
                                       operand.nullable);
}

BoundExpression Binder::bitwiseNot(const BoundExpression& operand, int line) const {
    const TypeSpec& type = operand.type;
    if (!tsql::isInteger(type.type)) invalidOperand("'~'", type, line);
    constexpr std::int64_t kByte = 255;
    sql::Expression result = sql::Unary{sql::UnaryOperator::BitNot, operand.tree};
    if (type.type == SqlType::TinyInt) {
        result = sql::Binary{sql::BinaryOperator::BitAnd, std::move(result), sql::number(kByte)};
    } else if (type.type == SqlType::Bit) {
        result = sql::Binary{sql::BinaryOperator::Subtract, sql::number(1), operand.tree};
    }
    return BoundExpression::expression(std::move(result), type, operand.nullable);
}

BoundExpression Binder::arithmetic(BinaryOperator op, BoundExpression left, BoundExpression right,
                                   int line) const {
    if (left.nullLiteral) left = BoundExpression::nullOf(right.type);
    if (right.nullLiteral) right = BoundExpression::nullOf(left.type);
    for (const BoundExpression* operand : {&left, &right}) {
        const SqlType type = operand->type.type;
        const bool large =
            type == SqlType::Text || type == SqlType::NText || type == SqlType::Image;
        if (large || type == SqlType::UniqueIdentifier)
            invalidOperand(operatorName(op), operand->type, line);
    }
    refuseVariants(op, left.type, right.type, line);
    const bool texts = tsql::isText(left.type.type) || tsql::isText(right.type.type);
    const bool others = tsql::isNumber(left.type.type) || tsql::isNumber(right.type.type) ||
                        tsql::isDate(left.type.type) || tsql::isDate(right.type.type);
    const bool binaries = tsql::isBinary(left.type.type) || tsql::isBinary(right.type.type);
    if (!others) {
        if (op == BinaryOperator::Add) return joined(std::move(left), right, line);
        if (texts && !binaries) invalidOperand(operatorName(op), left.type, line);
        incompatible(op, left.type, right.type, line);
    }
    if (texts || binaries) {
        // The number or date wins: the other side is converted to it.
        const TypeSpec target = commonType(left.type, right.type);
        left = convertTo(left, target, line);
        right = convertTo(right, target, line);
    }
    if (tsql::isDate(left.type.type) || tsql::isDate(right.type.type))
        return dateArithmetic(op, left, right, line);
    if (tsql::isApproximate(left.type.type) || tsql::isApproximate(right.type.type)) {
        return floatArithmetic(op, left, right, line);
    }
    return exactArithmetic(op, left, right, line);
}

BoundExpression Binder::joined(BoundExpression left, const BoundExpression& right, int line) const {
    const bool binary = tsql::isBinary(left.type.type);
    if (binary != tsql::isBinary(right.type.type))
        incompatible(BinaryOperator::Add, left.type, right.type, line);
    const TypeSpec type = joinedType(left.type, right.type);
    const bool goesOn = left.chain.as<sql::Chain>() != nullptr;
    const bool leftIsCut = goesOn && !left.tree.isSame(left.chain);
    sql::Chain chain{sql::ChainOperator::Join, {}};
    if (goesOn) {
        left.tree = {};
        chain = std::move(left.chain).take<sql::Chain>();
    } else {
        chain.parts.push_back(std::move(left.tree));
    }
    chain.parts.push_back(right.tree);
    BoundExpression result =
        BoundExpression::expression(std::move(chain), type, nullable(left, right));
    result.chain = result.tree;
    if (binary) {
        result.tree = sql::Bytes{std::move(result.tree)};
        return result;
    }
    // What goes beyond the longest text is cut, as the server does without a word. In a chain it is
    // enough to cut once.
    const bool mayBeLonger =
        type.length != tsql::kMaxLength && left.type.length + right.type.length > type.length;
    if (mayBeLonger || leftIsCut) {
        const BoundExpression whole =
            BoundExpression::expression(result.chain, {type.type, tsql::kMaxLength}, true);
        result.tree = castTo(whole, type, 0, line).tree;
    }
    return result;
}

BoundExpression Binder::exactArithmetic(BinaryOperator op, const BoundExpression& left,
                                        const BoundExpression& right, int line) const {
    const bool whole = tsql::isInteger(left.type.type) && tsql::isInteger(right.type.type);
    const bool bits = left.type.type == SqlType::Bit && right.type.type == SqlType::Bit;
    if ((bits || !whole) && isBitwise(op) && !(bits && whole))
        incompatible(op, left.type, right.type, line);
    if (bits && !isBitwise(op)) incompatible(op, left.type, right.type, line);
    if (tsql::isDecimal(left.type.type) || tsql::isDecimal(right.type.type)) {
        return decimalArithmetic(op, left, right);
    }
    const bool leftWins =
        tsql::factsOf(left.type.type).precedence >= tsql::factsOf(right.type.type).precedence;
    const TypeSpec type = leftWins ? left.type : right.type;
    return wholeArithmetic(op, left, right, type);
}

// Integers and money: the result has the type of one operand, so both are brought to its scale.
BoundExpression Binder::wholeArithmetic(BinaryOperator op, const BoundExpression& left,
                                        const BoundExpression& right, const TypeSpec& type) const {
    const int scale = storedScale(type);
    if (isSum(op)) return sum(op, left, right, type, scale);
    const auto result = [&](sql::Expression tree) {
        return BoundExpression::expression(std::move(tree), type, nullable(left, right));
    };
    switch (op) {
        case BinaryOperator::BitAnd:
            return result(sql::Binary{sql::BinaryOperator::BitAnd, left.tree, right.tree});
        case BinaryOperator::BitOr:
            return result(sql::Binary{sql::BinaryOperator::BitOr, left.tree, right.tree});
        case BinaryOperator::BitXor:
            return result(sql::call(fn::kXor, left.tree, right.tree));
        case BinaryOperator::Multiply: {
            const int productScale = storedScale(left.type) + storedScale(right.type);
            return result(sql::call(fn::kMultiply, left.tree, right.tree, productScale, type));
        }
        case BinaryOperator::Divide: {
            const int shift = scale - storedScale(left.type) + storedScale(right.type);
            return result(sql::call(fn::kDivide, left.tree, right.tree, shift, type));
        }
        default:
            return modulo(left, right, type, scale);
    }
}

BoundExpression Binder::decimalArithmetic(BinaryOperator op, const BoundExpression& left,
                                          const BoundExpression& right) const {
    const TypeSpec type = decimalResult(op, decimalOperand(left), decimalOperand(right));
    if (isSum(op)) return sum(op, left, right, type, type.scale);
    if (op == BinaryOperator::Modulo) return modulo(left, right, type, type.scale);
    const int leftScale = storedScale(left.type);
    const int rightScale = storedScale(right.type);
    const bool product = op == BinaryOperator::Multiply;
    const int shift = product ? leftScale + rightScale : type.scale - leftScale + rightScale;
    return BoundExpression::expression(
        sql::call(product ? fn::kMultiply : fn::kDivide, left.tree, right.tree, shift, type), type,
        nullable(left, right));
}

BoundExpression Binder::floatArithmetic(BinaryOperator op, const BoundExpression& left,
                                        const BoundExpression& right, int line) const {
    const bool product = op == BinaryOperator::Multiply;
    if (!isSum(op) && !product && op != BinaryOperator::Divide) {
        incompatible(op, left.type, right.type, line);
    }
    const TypeSpec type = commonType(left.type, right.type);
    const BoundExpression first = convertTo(left, type, line);
    const BoundExpression second = convertTo(right, type, line);
    if (isSum(op)) return sum(op, first, second, type, 0);
    return BoundExpression::expression(
        sql::call(product ? fn::kFloatMultiply : fn::kFloatDivide, first.tree, second.tree, type),
        type, nullable(left, right));
}

BoundExpression Binder::dateArithmetic(BinaryOperator op, const BoundExpression& left,
                                       const BoundExpression& right, int line) const {
    const bool sums = op == BinaryOperator::Add || op == BinaryOperator::Subtract;
    for (const BoundExpression* operand : {&left, &right}) {
        const BoundExpression& other = operand == &left ? right : left;
        if (tsql::isDateTime(operand->type.type) || !tsql::isDate(operand->type.type)) continue;
        const bool fine = tsql::isFineDate(operand->type.type) || tsql::isFineDate(other.type.type);
        if (fine && tsql::isDate(other.type.type) && operand->type.type != other.type.type) {
            incompatible(op, left.type, right.type, line);
        }
        if (tsql::isDate(other.type.type)) invalidOperand(operatorName(op), operand->type, line);
        throw ServerError(tsql::Message::OperandTypeClash,
                          {tsql::typeName(operand->type.type), tsql::typeName(other.type.type)},
                          line);
    }
    if (!sums) {
        const BoundExpression& date = tsql::isDate(left.type.type) ? left : right;
        invalidOperand(operatorName(op), date.type, line);
    }
    const TypeSpec type = commonType(left.type, right.type);
    const BoundExpression first = convertTo(left, type, line);
    const BoundExpression second = convertTo(right, type, line);
    const fn::Function& function = op == BinaryOperator::Add ? fn::kDateSum : fn::kDateDifference;
    return BoundExpression::expression(sql::call(function, first.tree, second.tree, type), type,
                                       nullable(left, right));
}

}  // namespace kap::engine
