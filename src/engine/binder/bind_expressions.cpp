#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/aggregates.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/collations.hpp"
#include "engine/binder/system_values.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "engine/values/code_page_text.hpp"
#include "engine/values/dates.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::engine {

using tsql::LiteralKind;
using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kMaxLiteralDigits = 38;

// 12 is an int, 3000000000 a decimal; 1.50 is decimal(3,2).
// A whole number that is an int whatever its digits are; nullopt for one that may be longer.
std::optional<BoundExpression> shortLiteral(std::string_view digits) {
    if (digits.size() > std::numeric_limits<std::int32_t>::digits10) return std::nullopt;
    const auto value = plain::readWhole(digits);
    if (!value) return std::nullopt;
    return BoundExpression::literal(*value, {SqlType::Int});
}

BoundExpression exactLiteral(const std::string& text, bool whole, int line) {
    if (whole) {
        if (auto literal = shortLiteral(text)) return *std::move(literal);
    }
    const auto number = parseScaled(text);
    int digits = 1;
    for (Wide rest = number ? number->value / 10 : Wide{0}; rest != 0; rest = rest / 10)
        ++digits;
    if (!number || std::max(digits, number->scale) > kMaxLiteralDigits) {
        throw ServerError(tsql::Message::NumberTooWide, {text}, line);
    }
    const TypeSpec type =
        tsql::decimalType(SqlType::Numeric, std::max(digits, number->scale), number->scale);
    if (whole && number->value <= 2147483647) {
        return BoundExpression::literal(static_cast<std::int64_t>(number->value), {SqlType::Int});
    }
    return BoundExpression::literal(exactValue(number->value, type), type);
}

// -9223372036854775808: its digits alone are one more than bigint holds.
bool isLowestBigInt(const tsql::UnaryExpression& node) {
    const auto* literal = std::get_if<tsql::Literal>(&node.operand->node);
    return node.op == tsql::UnaryOperator::Minus && literal != nullptr &&
           literal->kind == LiteralKind::Integer && literal->text == "9223372036854775808";
}

BoundExpression floatLiteral(std::string text, int line) {
    // An exponent without digits is zero.
    const char last = text.back();
    if (last == 'e' || last == 'E' || last == '+' || last == '-') text += '0';
    const auto number = plain::readReal(text);
    if (!number || !number->inRange) {
        throw ServerError(tsql::Message::FloatOutOfRange, {text}, line);
    }
    return BoundExpression::literal(number->value, {SqlType::Float});
}

BoundExpression textLiteral(const std::string& written, bool national) {
    const std::string text = national ? written : inCodePage(written);
    constexpr std::size_t kMaxBytes = 8000;
    const std::size_t limit = national ? kMaxBytes / 2 : kMaxBytes;
    const std::size_t units = unitLength(text);
    const int length = units > limit ? tsql::kMaxLength : std::max(1, static_cast<int>(units));
    return BoundExpression::literal(text,
                                    {national ? SqlType::NVarChar : SqlType::VarChar, length});
}

BoundExpression binaryLiteral(const std::string& digits) {
    const std::string even = digits.size() % 2 == 0 ? digits : "0" + digits;
    const TypeSpec text{SqlType::VarChar, tsql::kMaxLength};
    const int length = std::max(1, static_cast<int>(even.size() / 2));
    const TypeSpec type{SqlType::VarBinary, length};
    constexpr int kPlainDigits = 2;
    return BoundExpression::literal(convert(even, text, type, Overlength::Cut, kPlainDigits), type);
}

// A type in messages about conversions into sql_variant, which takes nothing without limit.
std::string nameWithLimit(const TypeSpec& type) {
    const bool limitless = tsql::hasLength(type.type) && type.length == tsql::kMaxLength;
    return tsql::typeName(type.type) + std::string(limitless ? "(max)" : "");
}

ConversionRule ruleFor(const TypeSpec& from, const TypeSpec& to) {
    const bool limitless = from.length == tsql::kMaxLength;
    return limitless && tsql::isVariant(to.type) ? ConversionRule::Never
                                                 : conversionRule(from.type, to.type);
}

[[noreturn]] void clash(const BoundExpression& value, const TypeSpec& type, int line) {
    const bool variant = tsql::isVariant(type.type);
    throw ServerError(tsql::Message::OperandTypeClash,
                      {variant ? nameWithLimit(value.type) : tsql::typeName(value.type.type),
                       tsql::typeName(type.type)},
                      line);
}

BoundExpression folded(const BoundExpression& value, const TypeSpec& type, Overlength overlength,
                       int style, int line) {
    try {
        return BoundExpression::literal(
            convert(*value.constant(), value.type, type, overlength, style), type);
    } catch (const ServerError& error) {
        throw error.at(line);
    }
}

// A text that is converted to another keeps its order.
BoundExpression keptOrder(const BoundExpression& value, BoundExpression converted) {
    if (tsql::isText(value.type.type) && tsql::isText(converted.type.type)) {
        converted.collation = value.collation;
        converted.coercibility = value.coercibility;
    }
    return converted;
}

void checkImplicit(const BoundExpression& value, const TypeSpec& type, int line) {
    switch (ruleFor(value.type, type)) {
        case ConversionRule::Implicit:
            return;
        case ConversionRule::Never:
            clash(value, type, line);
        case ConversionRule::ExplicitOnly:
            break;
    }
    throw ServerError(tsql::Message::ImplicitConversionNotAllowed,
                      {tsql::typeName(value.type.type), tsql::typeName(type.type)}, line);
}

}  // namespace

BoundExpression Binder::literal(const tsql::Literal& literal, int line) {
    switch (literal.kind) {
        case LiteralKind::Null:
            return BoundExpression::null();
        case LiteralKind::Integer:
            return exactLiteral(literal.text, true, line);
        case LiteralKind::Decimal:
            return exactLiteral(literal.text, false, line);
        case LiteralKind::Float:
            return floatLiteral(literal.text, line);
        case LiteralKind::Money: {
            const BoundExpression text = textLiteral(literal.text, false);
            return folded(text, {SqlType::Money}, Overlength::Cut, 0, line);
        }
        case LiteralKind::Text:
            return textLiteral(literal.text, false);
        case LiteralKind::NationalText:
            return textLiteral(literal.text, true);
        case LiteralKind::Binary:
            return binaryLiteral(literal.text);
    }
    throw ServerError(tsql::Message::SyntaxNear, {literal.text}, line);
}

BoundExpression Binder::value(const tsql::Expression& expression, Scope& scope) {
    tsql::requireStack(expression.line);
    if (scope.grouped && !scope.insideAggregate) {
        if (auto grouped = groupedValue(expression, scope)) return *grouped;
    }
    return std::visit([&](const auto& kind) { return node(kind, expression.line, scope); },
                      expression.node);
}

BoundExpression Binder::computedValue(const tsql::Expression& expression, Scope& scope) {
    const Restored definition(computedColumn_, true);
    return value(expression, scope);
}

// After grouping an expression may stand that repeats one of GROUP BY, such as a + 1 or year(d).
std::optional<BoundExpression> Binder::groupedValue(const tsql::Expression& expression,
                                                    Scope& scope) {
    if (scope.groupingSets) return groupedOfSets(expression, scope);
    const bool simple = std::holds_alternative<tsql::Literal>(expression.node) ||
                        std::holds_alternative<tsql::ColumnReference>(expression.node) ||
                        std::holds_alternative<tsql::ScalarSubquery>(expression.node);
    if (simple || scope.groups.empty() || expression.isPredicate() || containsAggregate(expression))
        return std::nullopt;
    const Restored before(scope.grouped, false);
    const BoundExpression bound = value(expression, scope);
    if (std::find(scope.groups.begin(), scope.groups.end(), bound.tree) == scope.groups.end())
        return std::nullopt;
    return bound;
}

BoundExpression Binder::node(const tsql::Literal& node, int line, Scope& /*scope*/) {
    met(node);
    return literal(node, line);
}

BoundExpression Binder::node(const tsql::ColumnReference& node, int /*line*/, Scope& scope) {
    return resolveColumn(node.name, scope).value;
}

BoundExpression Binder::node(const tsql::VariableReference& node, int line, Scope& /*scope*/) {
    if (node.name.compare(0, 2, "@@") == 0) return systemVariable(node.name, systemCall(), line);
    if (parameters_) {
        for (const auto& [name, given] : parameters_->values) {
            if (sameName(name, node.name)) return givenThrough(given, parameters_->givenAround);
        }
    }
    const Variable* variable = parameters_ ? nullptr : names_.variable(node.name);
    if (variable == nullptr) {
        throw ServerError(tsql::Message::UndeclaredVariable, {node.name}, line);
    }
    if (variablesPerRow_) {
        return BoundExpression::expression(sql::call(fn::kVariable, variable->slot), variable->type,
                                           true);
    }
    if (std::find(usedVariables_.begin(), usedVariables_.end(), variable->slot) ==
        usedVariables_.end()) {
        usedVariables_.push_back(variable->slot);
    }
    return givenThrough(BoundExpression::expression(sql::Parameter{parameterOf(variable->slot)},
                                                    variable->type, true),
                        0);
}

// A value that stands around a query is given to it, one query after the other, from without.
BoundExpression Binder::givenThrough(BoundExpression value, std::size_t first) const {
    if (value.constant() != nullptr || value.nullLiteral) return value;
    for (std::size_t i = first; i < givenTo_.size(); ++i)
        value = value.readBy(givenTo_[i]->given(value.tree));
    return value;
}

BoundExpression Binder::node(const tsql::UnaryExpression& node, int line, Scope& scope) {
    if (isLowestBigInt(node)) {
        return BoundExpression::literal(std::numeric_limits<std::int64_t>::min(),
                                        {SqlType::BigInt});
    }
    BoundExpression operand = value(*node.operand, scope);
    switch (node.op) {
        case tsql::UnaryOperator::Minus:
            return negated(operand, line);
        case tsql::UnaryOperator::BitNot:
            return bitwiseNot(operand, line);
        default:
            return operand;
    }
}

// A chain a + b + c... is as deep as it is long, and nothing bounds its length: its operators are
// taken one after the other, from the innermost on the left.
BoundExpression Binder::node(const tsql::BinaryExpression& node, int line, Scope& scope) {
    struct Operator {
        const tsql::BinaryExpression* node;
        int line;
    };
    std::vector<Operator> outward{{&node, line}};
    const tsql::Expression* left = node.left.get();
    std::optional<BoundExpression> result;
    while (const auto* inner = std::get_if<tsql::BinaryExpression>(&left->node)) {
        if (scope.grouped && !scope.insideAggregate) result = groupedValue(*left, scope);
        if (result) break;
        outward.push_back({inner, left->line});
        left = inner->left.get();
    }
    if (!result) result = value(*left, scope);
    for (auto each = outward.rbegin(); each != outward.rend(); ++each) {
        BoundExpression right = value(*each->node->right, scope);
        result = operated(each->node->op, std::move(*result), std::move(right), each->line);
    }
    return std::move(*result);
}

BoundExpression Binder::operated(tsql::BinaryOperator op, BoundExpression left,
                                 BoundExpression right, int line) const {
    Coercion together;
    if (tsql::isText(left.type.type) && tsql::isText(right.type.type)) {
        const Coercibility strongest = std::max(left.coercibility, right.coercibility);
        together = left.collation == nullptr && right.collation == nullptr
                       ? Coercion{nullptr, strongest}
                       : coerced({left, right}, "add", line);
    }
    BoundExpression result = arithmetic(op, std::move(left), std::move(right), line);
    if (tsql::isText(result.type.type)) {
        result.collation = std::move(together.collation);
        result.coercibility = together.coercibility;
    }
    return result;
}

// What tests is no value: the grammar keeps conditions out of value places.
template <typename Predicate>
BoundExpression Binder::node(const Predicate& /*node*/, int line, Scope& /*scope*/) {
    throw ServerError(tsql::Message::ConditionWhereValueExpected, {}, line);
}

BoundExpression Binder::node(const tsql::CastExpression& node, int line, Scope& scope) {
    const BoundExpression operand = value(*node.value, scope);
    BoundExpression style =
        BoundExpression::literal(std::int64_t{kDefaultDateStyle}, {SqlType::Int});
    if (node.style) style = convertTo(value(*node.style, scope), {SqlType::Int}, line);
    if (!node.tries && style.constant() != nullptr) {
        return castTo(operand, node.type,
                      static_cast<int>(std::get<std::int64_t>(*style.constant())), line);
    }
    // What is tried is tried when the statement runs, also a constant.
    BoundExpression result =
        castCall(node.tries ? fn::kTryConvert : fn::kConvert, operand, node.type, style.tree, line);
    result.nullable = true;
    return result;
}

BoundExpression Binder::node(const tsql::ScalarSubquery& node, int line, Scope& scope) {
    if (scope.insideAggregate) throw aggregateOfAggregate(line);
    BoundQuery bound = query(*node.query, &scope, QueryPlace::Nested);
    if (bound.columns.size() != 1) {
        throw ServerError(tsql::Message::OneExpressionInSubquery, {}, line);
    }
    sql::Select value = sql::one(sql::call(fn::kSingle, numberedColumn(0)),
                                 sql::from(sql::Derived{std::move(bound.tree)}));
    BoundExpression single = BoundExpression::expression(sql::Subquery{std::move(value)},
                                                         bound.columns[0].value.type, true);
    single.markup = bound.columns[0].value.markup;
    single.collation = bound.columns[0].value.collation;
    single.coercibility = bound.columns[0].value.coercibility;
    return single;
}

BoundExpression Binder::node(const tsql::CaseExpression& node, int line, Scope& scope) {
    sql::Case choice;
    std::vector<sql::Expression> whens;
    std::vector<BoundExpression> results;
    whens.reserve(node.branches.size());
    results.reserve(node.branches.size() + 1);
    if (node.subject) {
        choice.subject = caseSubject(node, whens, line, scope);
    } else {
        for (const auto& branch : node.branches)
            whens.push_back(condition(*branch.when, scope));
    }
    for (const auto& branch : node.branches)
        results.push_back(value(*branch.then, scope));
    if (node.otherwise) results.push_back(value(*node.otherwise, scope));
    const auto type = commonType(results);
    if (!type) {
        throw ServerError(tsql::Message::CaseOfNulls, {}, line);
    }
    bool nullable = !node.otherwise;
    for (std::size_t i = 0; i < results.size(); ++i) {
        BoundExpression result = convertTo(results[i], *type, line);
        nullable = nullable || result.nullable;
        if (i < whens.size()) {
            choice.branches.push_back({std::move(whens[i]), std::move(result.tree)});
        } else {
            choice.otherwise = std::move(result.tree);
        }
    }
    BoundExpression chosen = BoundExpression::expression(std::move(choice), *type, nullable);
    inheritCollation(chosen, results, "CASE", line);
    return chosen;
}

sql::Expression Binder::caseSubject(const tsql::CaseExpression& node,
                                    std::vector<sql::Expression>& whens, int line, Scope& scope) {
    std::vector<BoundExpression> values{value(*node.subject, scope)};
    for (const auto& branch : node.branches)
        values.push_back(value(*branch.when, scope));
    values = comparable(std::move(values), "equal to", line);
    for (std::size_t i = 1; i < values.size(); ++i)
        whens.push_back(values[i].tree);
    return collated(values.front());
}

BoundExpression Binder::convertTo(const BoundExpression& value, const TypeSpec& type,
                                  int line) const {
    if (value.nullLiteral) return BoundExpression::nullOf(type);
    if (value.type == type) return value;
    checkImplicit(value, type, line);
    if (value.constant() != nullptr) {
        return keptOrder(value, folded(value, type, Overlength::Cut, 0, line));
    }
    if (!needsConversion(value.type, type)) return value.as(type);
    return keptOrder(
        value, BoundExpression::expression(
                   sql::Conversion{fn::kConvert, value.tree, value.type, type, sql::number(0)},
                   type, value.nullable));
}

BoundExpression Binder::castTo(const BoundExpression& value, const TypeSpec& type, int style,
                               int line) const {
    const bool allowed = ruleFor(value.type, type) != ConversionRule::Never || value.nullLiteral;
    if (value.constant() != nullptr && allowed) {
        return keptOrder(value, folded(value, type, Overlength::Cut, style, line));
    }
    return castCall(fn::kConvert, value, type, sql::number(style), line);
}

BoundExpression Binder::castCall(const fn::Function& function, const BoundExpression& value,
                                 const TypeSpec& type, sql::Expression style, int line) const {
    if (value.nullLiteral) return BoundExpression::nullOf(type);
    if (ruleFor(value.type, type) == ConversionRule::Never) {
        const bool variant = tsql::isVariant(type.type);
        throw ServerError(tsql::Message::ExplicitConversionNotAllowed,
                          {variant ? nameWithLimit(value.type) : tsql::typeName(value.type.type),
                           tsql::typeName(type.type)},
                          line);
    }
    if (!needsConversion(value.type, type)) {
        // The type was asked for, so the result is an expression of it and no longer the column.
        return keptOrder(value, BoundExpression::expression(value.tree, type, value.nullable));
    }
    return keptOrder(
        value, BoundExpression::expression(
                   sql::Conversion{function, value.tree, value.type, type, std::move(style)}, type,
                   value.nullable));
}

sql::Expression Binder::stored(const BoundExpression& value, const TypeSpec& type, int line,
                               const WrittenLiteral& written) const {
    if (value.nullLiteral) return sql::null();
    checkImplicit(value, type, line);
    requireCollation(value, type, line);
    if (value.constant() != nullptr) {
        const BoundExpression constant = folded(value, type, Overlength::Refuse, 0, line);
        ConstantSource source;
        source.use = ConstantSource::Use::Stored;
        source.type = type;
        return storedConstant(constant, checkedSource(source, written, constant));
    }
    if (!needsConversion(value.type, type)) return value.tree;
    return sql::Conversion{fn::kStore, value.tree, value.type, type};
}

}  // namespace kap::engine
