#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

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
    if (!value.constant || !tsql::isInteger(value.type.type)) return value.type;
    int digits = 1;
    for (auto rest = std::get<std::int64_t>(*value.constant) / 10; rest != 0; rest /= 10)
        ++digits;
    return {SqlType::Numeric, 0, digits, 0};
}

bool nullable(const BoundExpression& left, const BoundExpression& right) {
    return left.nullable || right.nullable;
}

bool isSum(BinaryOperator op) {
    return op == BinaryOperator::Add || op == BinaryOperator::Subtract;
}

SumTerm sumTerm(const BoundExpression& value, bool minus) {
    SumTerm term{minus, value.sql, storedScale(value.type), std::nullopt};
    if (value.constant && tsql::isExact(value.type.type)) {
        term.constant = narrow(exactOf(*value.constant));
    }
    return term;
}

// The name of a sum: "kap_add", "kap_float_subtract", "kap_accumulate"...
std::string sumFunction(const std::vector<SumTerm>& terms, const TypeSpec& type) {
    const std::string family = tsql::isApproximate(type.type) ? "kap_float_" : "kap_";
    if (terms.size() > 2) return family + "accumulate";
    return family + (terms[1].minus ? "subtract" : "add");
}

std::string sumText(const std::vector<SumTerm>& terms, const TypeSpec& type, int scale) {
    const std::string function = sumFunction(terms, type);
    if (terms.size() == 2) {
        return callText(function.c_str(), terms[0].at(scale), terms[1].at(scale),
                        typeArgument(type));
    }
    std::string signs;
    std::string operands;
    for (const SumTerm& term : terms) {
        signs += term.minus ? '-' : '+';
        operands += ", " + term.at(scale);
    }
    return function + "(" + typeArgument(type) + ", " + sqlText(signs) + operands + ")";
}

// A sum of many terms is one flat call: SQLite's parser has room for some thirty calls within each
// other only. A function takes at most 127 arguments, so a longer sum goes on in a new call.
BoundExpression sum(BinaryOperator op, const BoundExpression& left, const BoundExpression& right,
                    const TypeSpec& type, int scale) {
    constexpr std::size_t kMostTerms = 100;
    BoundExpression result = BoundExpression::expression("", type, nullable(left, right));
    const bool continues = !left.terms.empty() && left.terms.size() < kMostTerms &&
                           (left.type == type || tsql::isDecimal(left.type.type));
    result.terms = continues ? left.terms : std::vector<SumTerm>{sumTerm(left, false)};
    result.terms.push_back(sumTerm(right, op == BinaryOperator::Subtract));
    result.sql = sumText(result.terms, type, scale);
    return result;
}

BoundExpression modulo(const BoundExpression& left, const BoundExpression& right,
                       const TypeSpec& type, int scale) {
    return BoundExpression::expression(
        callText("kap_modulo", sumTerm(left, false).at(scale), sumTerm(right, false).at(scale),
                 typeArgument(type)),
        type, nullable(left, right));
}

}  // namespace

BoundExpression Binder::negated(const BoundExpression& operand, int line) {
    if (operand.nullLiteral) return operand;
    TypeSpec type = operand.type;
    if (tsql::isApproximate(type.type)) {
        if (operand.constant)
            return BoundExpression::literal(-std::get<double>(*operand.constant), type);
        return BoundExpression::expression("(-" + operand.sql + ")", type, operand.nullable);
    }
    if (!tsql::isExact(type.type) || type.type == SqlType::Bit) invalidOperand("minus", type, line);
    if (type.type == SqlType::TinyInt) type = {SqlType::SmallInt};
    if (operand.constant) {
        try {
            // The lowest bigint has no counterpart.
            return BoundExpression::literal(fitWide(-exactOf(*operand.constant), storedScale(type),
                                                    type, Rounding::Truncate, "expression"),
                                            type);
        } catch (const ServerError& error) {
            throw error.at(line);
        }
    }
    return BoundExpression::expression(callText("kap_negate", operand.sql, typeArgument(type)),
                                       type, operand.nullable);
}

BoundExpression Binder::bitwiseNot(const BoundExpression& operand, int line) const {
    const TypeSpec& type = operand.type;
    if (!tsql::isInteger(type.type)) invalidOperand("'~'", type, line);
    std::string sql = "(~" + operand.sql + ")";
    if (type.type == SqlType::TinyInt) sql = "(~" + operand.sql + " & 255)";
    if (type.type == SqlType::Bit) sql = "(1 - " + operand.sql + ")";
    return BoundExpression::expression(sql, type, operand.nullable);
}

BoundExpression Binder::arithmetic(BinaryOperator op, BoundExpression left, BoundExpression right,
                                   int line) const {
    if (left.nullLiteral) left = BoundExpression::expression("NULL", right.type, true);
    if (right.nullLiteral) right = BoundExpression::expression("NULL", left.type, true);
    for (const BoundExpression* operand : {&left, &right}) {
        const SqlType type = operand->type.type;
        const bool large =
            type == SqlType::Text || type == SqlType::NText || type == SqlType::Image;
        if (large || type == SqlType::UniqueIdentifier)
            invalidOperand(operatorName(op), operand->type, line);
    }
    const bool texts = tsql::isText(left.type.type) || tsql::isText(right.type.type);
    const bool others = tsql::isNumber(left.type.type) || tsql::isNumber(right.type.type) ||
                        tsql::isDate(left.type.type) || tsql::isDate(right.type.type);
    const bool binaries = tsql::isBinary(left.type.type) || tsql::isBinary(right.type.type);
    if (!others) {
        if (op == BinaryOperator::Add) return joined(left, right, line);
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

BoundExpression Binder::joined(const BoundExpression& left, const BoundExpression& right,
                               int line) const {
    const bool binary = tsql::isBinary(left.type.type);
    if (binary != tsql::isBinary(right.type.type))
        incompatible(BinaryOperator::Add, left.type, right.type, line);
    const TypeSpec type = joinedType(left.type, right.type);
    BoundExpression result = BoundExpression::expression("", type, nullable(left, right));
    result.joint = (left.joint.empty() ? left.sql : left.joint) + " || " + right.sql;
    result.sql = "(" + result.joint + ")";
    if (binary) {
        result.sql = "CAST(" + result.sql + " AS BLOB)";
        return result;
    }
    // What goes beyond the longest text is cut, as the server does without a word. In a chain it is
    // enough to cut once.
    const bool mayBeLonger =
        type.length != tsql::kMaxLength && left.type.length + right.type.length > type.length;
    if (mayBeLonger || left.cut) {
        const BoundExpression whole =
            BoundExpression::expression(result.sql, {type.type, tsql::kMaxLength}, result.nullable);
        result.sql = castTo(whole, type, 0, line).sql;
        result.cut = true;
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
    const std::string packed = typeArgument(type);
    const auto result = [&](std::string sql) {
        return BoundExpression::expression(std::move(sql), type, nullable(left, right));
    };
    switch (op) {
        case BinaryOperator::BitAnd:
            return result("(" + left.sql + " & " + right.sql + ")");
        case BinaryOperator::BitOr:
            return result("(" + left.sql + " | " + right.sql + ")");
        case BinaryOperator::BitXor:
            return result(callText("kap_xor", left.sql, right.sql));
        case BinaryOperator::Multiply: {
            const int productScale = storedScale(left.type) + storedScale(right.type);
            return result(
                callText("kap_multiply", left.sql, right.sql, plain::text(productScale), packed));
        }
        case BinaryOperator::Divide: {
            const int shift = scale - storedScale(left.type) + storedScale(right.type);
            return result(callText("kap_divide", left.sql, right.sql, plain::text(shift), packed));
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
    const std::string packed = typeArgument(type);
    const int leftScale = storedScale(left.type);
    const int rightScale = storedScale(right.type);
    const bool product = op == BinaryOperator::Multiply;
    const int shift = product ? leftScale + rightScale : type.scale - leftScale + rightScale;
    return BoundExpression::expression(callText(product ? "kap_multiply" : "kap_divide", left.sql,
                                                right.sql, plain::text(shift), packed),
                                       type, nullable(left, right));
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
    return BoundExpression::expression(callText(product ? "kap_float_multiply" : "kap_float_divide",
                                                first.sql, second.sql, typeArgument(type)),
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
    const char* function = op == BinaryOperator::Add ? "kap_date_sum" : "kap_date_difference";
    return BoundExpression::expression(
        callText(function, first.sql, second.sql, typeArgument(type)), type, nullable(left, right));
}

}  // namespace kap::engine
