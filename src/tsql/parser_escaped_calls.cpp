#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// The functions of {fn name(...)}: data access has names of its own for what the dialect calls
// otherwise.
namespace kap::tsql {

namespace {

using Names = std::pair<const char*, const char*>;

// Those that take the same values in the same order.
constexpr auto kOtherNames = std::to_array<Names>({
    {"ATAN2", "ATN2"},
    {"CHAR_LENGTH", "LEN"},
    {"CHARACTER_LENGTH", "LEN"},
    {"CURRENT_TIMESTAMP", "GETDATE"},
    {"DATABASE", "DB_NAME"},
    {"DAYOFMONTH", "DAY"},
    {"IFNULL", "ISNULL"},
    {"INSERT", "STUFF"},
    {"LCASE", "LOWER"},
    {"LENGTH", "LEN"},
    {"LOCATE", "CHARINDEX"},
    {"NOW", "GETDATE"},
    {"OCTET_LENGTH", "DATALENGTH"},
    {"REPEAT", "REPLICATE"},
    {"UCASE", "UPPER"},
    {"USER", "USER_NAME"},
});

// Those that ask for a part of a date.
constexpr auto kParts = std::to_array<Names>({
    {"DAYOFWEEK", "weekday"},
    {"DAYOFYEAR", "dayofyear"},
    {"HOUR", "hour"},
    {"MINUTE", "minute"},
    {"QUARTER", "quarter"},
    {"SECOND", "second"},
    {"WEEK", "week"},
});

constexpr auto kNamesOfParts = std::to_array<Names>({
    {"DAYNAME", "weekday"},
    {"MONTHNAME", "month"},
});

// The units of TIMESTAMPADD and TIMESTAMPDIFF.
constexpr auto kIntervals = std::to_array<Names>({
    {"SQL_TSI_SECOND", "second"},
    {"SQL_TSI_MINUTE", "minute"},
    {"SQL_TSI_HOUR", "hour"},
    {"SQL_TSI_DAY", "day"},
    {"SQL_TSI_WEEK", "week"},
    {"SQL_TSI_MONTH", "month"},
    {"SQL_TSI_QUARTER", "quarter"},
    {"SQL_TSI_YEAR", "year"},
});

// The types of CONVERT.
constexpr auto kTypes = std::to_array<std::pair<const char*, TypeSpec>>({
    {"SQL_BIGINT", {SqlType::BigInt}},
    {"SQL_BIT", {SqlType::Bit}},
    {"SQL_CHAR", {SqlType::Char, 30}},
    {"SQL_DATE", {SqlType::DateTime}},
    {"SQL_DECIMAL", {SqlType::Decimal, 0, 18, 0}},
    {"SQL_DOUBLE", {SqlType::Float}},
    {"SQL_FLOAT", {SqlType::Float}},
    {"SQL_INTEGER", {SqlType::Int}},
    {"SQL_NUMERIC", {SqlType::Numeric, 0, 18, 0}},
    {"SQL_REAL", {SqlType::Real}},
    {"SQL_SMALLINT", {SqlType::SmallInt}},
    {"SQL_TIMESTAMP", {SqlType::DateTime}},
    {"SQL_TINYINT", {SqlType::TinyInt}},
    {"SQL_TYPE_DATE", {SqlType::DateTime}},
    {"SQL_TYPE_TIMESTAMP", {SqlType::DateTime}},
    {"SQL_VARBINARY", {SqlType::VarBinary, 30}},
    {"SQL_VARCHAR", {SqlType::VarChar, 30}},
    {"SQL_WCHAR", {SqlType::NChar, 30}},
    {"SQL_WVARCHAR", {SqlType::NVarChar, 30}},
});

template <typename Table>
auto entryOf(const Table& table, std::string_view name) {
    const auto found = std::ranges::find_if(
        table, [&](const auto& entry) { return equalsIgnoringCase(entry.first, name); });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace

ExpressionPtr Parser::escapedCall() {
    if (peek().kind == TokenKind::Word && (atOperator("(", 1) || peek(1).text == "}")) {
        const Token& name = peek();
        if (const auto* other = entryOf(kOtherNames, name.text); other && atOperator("(", 1)) {
            next();
            return call(ObjectName{{other->second}, name.line});
        }
        const std::size_t start = position_;
        next();
        if (ExpressionPtr result = escapedFunction(name.text, name.line)) return result;
        position_ = start;
    }
    return value();
}

// A function that is written as another one with other values; null when it is none of these. What
// is read is behind the name.
ExpressionPtr Parser::escapedFunction(std::string_view name, int line) {
    const auto is = [&](const char* wanted) { return equalsIgnoringCase(name, wanted); };
    const auto word = [&](const char* unit) { return make(ColumnReference{{{unit}, line}}, line); };
    const auto number = [&](const char* digits) {
        return make(Literal{LiteralKind::Integer, digits}, line);
    };
    const auto operation = [&](BinaryOperator op, ExpressionPtr left, ExpressionPtr right) {
        const int below = std::max(left->depth, right->depth);
        return make(BinaryExpression{op, std::move(left), std::move(right)}, line, below);
    };
    if (is("CURDATE") || is("CURRENT_DATE")) return nowAsText(false, line);
    if (is("CURTIME") || is("CURRENT_TIME")) return nowAsText(true, line);
    if (!acceptOperator("(")) return nullptr;
    ExpressionPtr result;
    if (const auto* part = entryOf(kParts, name)) {
        result = invoked("DATEPART", line, word(part->second), value());
    } else if (const auto* named = entryOf(kNamesOfParts, name)) {
        result = invoked("DATENAME", line, word(named->second), value());
    } else if (is("EXTRACT")) {
        ExpressionPtr asked = word(next().text.c_str());
        expectKeyword("FROM");
        result = invoked("DATEPART", line, std::move(asked), value());
    } else if (is("BIT_LENGTH")) {
        result =
            operation(BinaryOperator::Multiply, invoked("DATALENGTH", line, value()), number("8"));
    } else if (is("POSITION")) {
        // What is looked for ends before IN, which would be a condition of a value.
        ExpressionPtr wanted = value();
        expectKeyword("IN");
        result = invoked("CHARINDEX", line, std::move(wanted), value());
    } else if (is("TRUNCATE")) {
        ExpressionPtr given = value();
        expectOperator(",");
        ExpressionPtr digits = value();
        result = invoked("ROUND", line, std::move(given), std::move(digits), number("1"));
    } else if (is("MOD") || is("CONCAT")) {
        ExpressionPtr left = value();
        expectOperator(",");
        result = operation(is("MOD") ? BinaryOperator::Modulo : BinaryOperator::Add,
                           std::move(left), value());
    } else if (is("TIMESTAMPADD") || is("TIMESTAMPDIFF")) {
        result = escapedInterval(is("TIMESTAMPADD") ? "DATEADD" : "DATEDIFF", line);
    } else if (is("CONVERT")) {
        result = escapedConversion(line);
    } else {
        return nullptr;
    }
    expectOperator(")");
    return result;
}

// (SQL_TSI_DAY, a, b)
ExpressionPtr Parser::escapedInterval(const char* function, int line) {
    const auto* unit = entryOf(kIntervals, peek().text);
    if (unit == nullptr) unexpected();
    next();
    expectOperator(",");
    ExpressionPtr first = value();
    expectOperator(",");
    return invoked(function, line, make(ColumnReference{{{unit->second}, line}}, line),
                   std::move(first), value());
}

// (value, SQL_INTEGER)
ExpressionPtr Parser::escapedConversion(int line) {
    CastExpression result;
    result.value = value();
    expectOperator(",");
    const auto* type = entryOf(kTypes, peek().text);
    if (type == nullptr) unexpected();
    next();
    result.type = type->second;
    const int below = result.value->depth;
    return make(std::move(result), line, below);
}

// The day or the time of now as a text; how fine the time is may be said.
ExpressionPtr Parser::nowAsText(bool time, int line) {
    if (acceptOperator("(")) {
        if (time && peek().kind == TokenKind::Integer) next();
        expectOperator(")");
    }
    constexpr int kWhole = 23;
    constexpr int kDay = 10;
    CastExpression text;
    text.value = invoked("GETDATE", line);
    text.type = {SqlType::VarChar, time ? kWhole : kDay};
    text.style = make(Literal{LiteralKind::Integer, "121"}, line);
    ExpressionPtr whole = make(std::move(text), line, 1);
    if (!time) return whole;
    return invoked("RIGHT", line, std::move(whole),
                   make(Literal{LiteralKind::Integer, "12"}, line));
}

}  // namespace kap::tsql
