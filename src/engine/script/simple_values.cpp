#include "engine/script/simple_values.hpp"

#include <limits>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/values/code_page_text.hpp"
#include "engine/values/text_units.hpp"

namespace kap::engine {

namespace {

// A whole number, or Null; absent for what is neither.
struct Number {
    bool known = false;
    std::optional<std::int64_t> value;
};

Number systemNumber(std::string_view name, const SystemNumbers& numbers) {
    const std::string lower = asciiLower(name);
    if (lower == "@@error") return {true, numbers.error};
    if (lower == "@@rowcount") return {true, numbers.rowCount};
    if (lower == "@@trancount") return {true, numbers.transactions};
    if (lower == "@@fetch_status") return {true, numbers.fetchStatus};
    return {};
}

Number variableNumber(const std::string& name, const Frame& frame) {
    const Variable* variable = frame.program.names().variable(name);
    if (variable == nullptr || !tsql::isInteger(variable->type.type)) return {};
    const Value& value = frame.values[static_cast<std::size_t>(variable->slot)];
    if (isNull(value)) return {true, std::nullopt};
    const auto* number = std::get_if<std::int64_t>(&value);
    return number == nullptr ? Number() : Number{true, *number};
}

Number numberOf(const tsql::Expression& expression, const Frame& frame,
                const SystemNumbers& numbers) {
    if (const auto* literal = std::get_if<tsql::Literal>(&expression.node)) {
        if (literal->kind != tsql::LiteralKind::Integer) return {};
        const auto read = plain::readInt(literal->text);
        return read ? Number{true, *read} : Number();
    }
    const auto* variable = std::get_if<tsql::VariableReference>(&expression.node);
    if (variable == nullptr) return {};
    return variable->name.starts_with("@@") ? systemNumber(variable->name, numbers)
                                            : variableNumber(variable->name, frame);
}

bool hasRoom(const tsql::TypeSpec& type, const std::string& text) {
    const bool varies = type.type == tsql::SqlType::VarChar || type.type == tsql::SqlType::NVarChar;
    return varies && (type.length == tsql::kMaxLength ||
                      unitLength(text) <= static_cast<std::size_t>(type.length));
}

bool hasRoom(const tsql::TypeSpec& type, std::int64_t number) {
    return type.type == tsql::SqlType::BigInt ||
           (type.type == tsql::SqlType::Int && number >= std::numeric_limits<std::int32_t>::min() &&
            number <= std::numeric_limits<std::int32_t>::max());
}

bool holds(tsql::ComparisonOperator op, std::int64_t left, std::int64_t right) {
    using enum tsql::ComparisonOperator;
    switch (op) {
        case Equal:
            return left == right;
        case NotEqual:
            return left != right;
        case Less:
            return left < right;
        case LessOrEqual:
            return left <= right;
        case Greater:
            return left > right;
        case GreaterOrEqual:
            return left >= right;
    }
    return false;
}

}  // namespace

std::optional<Value> simpleValue(const tsql::Expression& expression, const tsql::TypeSpec& type,
                                 const Frame& frame, const SystemNumbers& numbers) {
    const auto* literal = std::get_if<tsql::Literal>(&expression.node);
    if (literal != nullptr && literal->kind == tsql::LiteralKind::Text) {
        if (!hasRoom(type, literal->text)) return std::nullopt;
        return inCodePage(literal->text);
    }
    const Number number = numberOf(expression, frame, numbers);
    if (!number.known || !hasRoom(type, number.value.value_or(0))) return std::nullopt;
    return number.value ? Value(*number.value) : Value();
}

std::optional<bool> simpleCondition(const tsql::Expression& condition, const Frame& frame,
                                    const SystemNumbers& numbers) {
    const auto* comparison = std::get_if<tsql::Comparison>(&condition.node);
    if (comparison == nullptr) return std::nullopt;
    const Number left = numberOf(*comparison->left, frame, numbers);
    if (!left.known) return std::nullopt;
    const Number right = numberOf(*comparison->right, frame, numbers);
    if (!right.known) return std::nullopt;
    return left.value && right.value && holds(comparison->op, *left.value, *right.value);
}

}  // namespace kap::engine
