#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/values/exact.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ComparisonOperator;
using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

struct OperatorFacts {
    sql::BinaryOperator op;
    const char* name;
};

OperatorFacts factsOf(ComparisonOperator op) {
    switch (op) {
        case ComparisonOperator::Equal:
            return {sql::BinaryOperator::Equal, "equal to"};
        case ComparisonOperator::NotEqual:
            return {sql::BinaryOperator::NotEqual, "not equal to"};
        case ComparisonOperator::Less:
            return {sql::BinaryOperator::Less, "less than"};
        case ComparisonOperator::LessOrEqual:
            return {sql::BinaryOperator::LessOrEqual, "less than or equal to"};
        case ComparisonOperator::Greater:
            return {sql::BinaryOperator::Greater, "greater than"};
        case ComparisonOperator::GreaterOrEqual:
            return {sql::BinaryOperator::GreaterOrEqual, "greater than or equal to"};
    }
    return {sql::BinaryOperator::Equal, ""};
}

void refuseLarge(const std::vector<BoundExpression>& values, const char* operation, int line) {
    const auto large = [](const BoundExpression& value) {
        const SqlType type = value.type.type;
        return type == SqlType::Text || type == SqlType::NText || type == SqlType::Image;
    };
    if (std::none_of(values.begin(), values.end(), large)) return;
    throw ServerError(tsql::Message::IncompatibleTypes,
                      {tsql::typeName(values.front().type.type),
                       tsql::typeName(values.back().type.type), operation},
                      line);
}

bool countsDays(SqlType type) {
    return tsql::isDate(type) && !tsql::isFineDate(type);
}

// How many digits behind the point a literal needs: those of 5.00 are none, so it meets an int as
// it is.
int neededScale(const BoundExpression& value) {
    int scale = storedScale(value.type);
    if (value.constant() == nullptr) return scale;
    Wide rest = exactOf(*value.constant());
    while (scale > 0 && rest % 10 == 0) {
        rest = rest / 10;
        --scale;
    }
    return scale;
}

// A constant at so many decimals; beyond every decimal where it does not fit.
Wide constantAt(const BoundExpression& value, int scale) {
    const Wide constant = exactOf(*value.constant());
    const auto scaled = rescale(constant, storedScale(value.type), scale, Rounding::HalfAway);
    return scaled ? *scaled : farthest(constant < 0);
}

BoundExpression wideAt(const BoundExpression& value, int scale) {
    constexpr int kMostDigits = 38;
    const TypeSpec type = tsql::decimalType(SqlType::Numeric, kMostDigits, scale);
    if (value.constant() != nullptr) {
        return BoundExpression::literal(wideBytes(constantAt(value, scale)), type);
    }
    const int own = storedScale(value.type);
    if (tsql::isWideDecimal(value.type) && own == scale) return value;
    return BoundExpression::expression(sql::call(fn::kWide, value.tree, scale - own), type,
                                       value.nullable);
}

BoundExpression atScale(const BoundExpression& value, int scale) {
    const int own = storedScale(value.type);
    if (own == scale && !tsql::isWideDecimal(value.type)) return value;
    if (value.constant() != nullptr) {
        const Wide constant = constantAt(value, scale);
        if (const auto result = narrow(constant)) {
            return BoundExpression::literal(*result, value.type);
        }
        // Beyond every stored number; a double says so, and SQLite compares the two exactly.
        return BoundExpression::literal(scaledToDouble(constant, 0), value.type);
    }
    return BoundExpression::expression(sql::call(fn::kWiden, value.tree, scale - own), value.type,
                                       value.nullable);
}

// Stored whole numbers compare natively once they stand for the same fractions.
void alignScales(std::vector<BoundExpression>& values) {
    int scale = 0;
    for (const BoundExpression& value : values)
        scale = std::max(scale, neededScale(value));
    // Constants alone do not make the others wide: an index of theirs has to serve.
    const bool constants = std::ranges::all_of(
        values, [](const BoundExpression& value) { return value.constant() != nullptr; });
    const bool wide = std::ranges::any_of(values, [&](const BoundExpression& value) {
        return tsql::isWideDecimal(value.type) && (constants || value.constant() == nullptr);
    });
    for (BoundExpression& value : values)
        value = wide ? wideAt(value, scale) : atScale(value, scale);
}

}  // namespace

std::vector<BoundExpression> Binder::comparable(std::vector<BoundExpression> values,
                                                const char* operation, int line) const {
    const auto type = commonType(values);
    if (!type) return values;
    refuseLarge(values, operation, line);
    const bool exact = tsql::isExact(type->type);
    for (BoundExpression& value : values) {
        if (value.nullLiteral) {
            value = BoundExpression::nullOf(*type);
            continue;
        }
        if (exact && tsql::isExact(value.type.type)) continue;
        // SQLite compares whole numbers with doubles exactly, and the older dates are the same kind
        // of number.
        const bool native =
            (tsql::isApproximate(type->type) && tsql::isInteger(value.type.type)) ||
            (tsql::isApproximate(type->type) && tsql::isApproximate(value.type.type)) ||
            (countsDays(type->type) && countsDays(value.type.type)) ||
            (tsql::isFineDate(type->type) && type->type == value.type.type) ||
            (tsql::isText(type->type) && tsql::isText(value.type.type)) ||
            (tsql::isBinary(type->type) && tsql::isBinary(value.type.type));
        if (!native) value = convertTo(value, *type, line);
    }
    if (exact) alignScales(values);
    if (tsql::isText(type->type)) compareInOneCollation(values, operation, line);
    return values;
}

sql::Expression Binder::compared(ComparisonOperator op, const BoundExpression& left,
                                 const BoundExpression& right, int line,
                                 const WrittenLiteral& leftWritten,
                                 const WrittenLiteral& rightWritten) const {
    const OperatorFacts facts = factsOf(op);
    const std::vector<BoundExpression> sides = comparable({left, right}, facts.name, line);
    // SQLite takes the collation of either column; when neither side is one it has to be told.
    const bool told = sides[0].plainColumn || sides[1].plainColumn;
    const bool constants = sides[0].constant() != nullptr && sides[1].constant() != nullptr;
    const auto side = [&](std::size_t at, const BoundExpression& before,
                          const BoundExpression& other, const WrittenLiteral& written) {
        if (constants) return sides[at].tree;
        return operand(sides[at], comparedSource(written, before, sides[at], other, sides[1 - at]));
    };
    sql::Expression first = side(0, left, right, leftWritten);
    sql::Expression second = side(1, right, left, rightWritten);
    if (!told) first = collated(sides[0], std::move(first));
    return sql::Binary{facts.op, std::move(first), std::move(second)};
}

}  // namespace kap::engine
