#include <algorithm>
#include <array>

#include "ado/embedded/translate/function_table.hpp"
#include "ado/embedded/translate/type_rules.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kMostBytes = 8000;

Typed result(ScalarCall& call, std::string sql, TypeSpec type) {
    return Typed::expression(std::move(sql), type, call.anyNullable());
}

TypeSpec ofLength(TypeSpec type, int length) {
    type.length = length;
    return type;
}

int longest(const TypeSpec& type) {
    return tsql::isNational(type.type) ? kMostBytes / 2 : kMostBytes;
}

// The value of a whole-number literal, or `otherwise`.
int constantOr(const Typed& argument, int otherwise) {
    if (!argument.constant || !std::holds_alternative<std::int64_t>(*argument.constant))
        return otherwise;
    return static_cast<int>(
        std::clamp<std::int64_t>(std::get<std::int64_t>(*argument.constant), 0, kMostBytes));
}

// Functions of one text that give a text of the same length.
template <const char* const& kFunction>
Typed sameText(ScalarCall& call) {
    return result(call, callText(kFunction, call.text(0)), call.textType(0));
}

constexpr const char* kUpper = "kap_upper";
constexpr const char* kLower = "kap_lower";
constexpr const char* kTrimLeft = "kap_ltrim";
constexpr const char* kTrimRight = "kap_rtrim";
constexpr const char* kReverse = "kap_reverse";

Typed trim(ScalarCall& call) {
    return result(call, callText("kap_ltrim", callText("kap_rtrim", call.text(0))),
                  call.textType(0));
}

Typed length(ScalarCall& call) {
    return result(call, callText("kap_len", call.text(0)), {SqlType::Int});
}

// The bytes that the server stores for the value.
Typed dataLength(ScalarCall& call) {
    const Typed& argument = call[0];
    const SqlType type = argument.type.type;
    if (tsql::isText(type)) {
        return result(call,
                      callText("kap_text_bytes", argument.sql, tsql::isNational(type) ? "2" : "1"),
                      {SqlType::Int});
    }
    if (tsql::isBinary(type)) return result(call, callText("length", argument.sql), {SqlType::Int});
    int width = 8;
    switch (type) {
        case SqlType::Bit:
        case SqlType::TinyInt:
            width = 1;
            break;
        case SqlType::SmallInt:
            width = 2;
            break;
        case SqlType::Int:
        case SqlType::Real:
        case SqlType::SmallMoney:
        case SqlType::SmallDateTime:
            width = 4;
            break;
        case SqlType::Date:
            width = 3;
            break;
        case SqlType::UniqueIdentifier:
            width = 16;
            break;
        case SqlType::Decimal:
        case SqlType::Numeric: {
            const int precision = argument.type.precision;
            width = precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
            break;
        }
        default:
            break;
    }
    return result(
        call,
        "(CASE WHEN " + argument.sql + " IS NOT NULL THEN " + tsql::integerText(width) + " END)",
        {SqlType::Int});
}

Typed substring(ScalarCall& call) {
    if (tsql::isBinary(call[0].type.type)) {
        return result(call, callText("kap_subbytes", call[0].sql, call.integer(1), call.integer(2)),
                      {SqlType::VarBinary, call[0].type.length});
    }
    const TypeSpec type = call.textType(0);
    const int bound = type.length == tsql::kMaxLength ? longest(type) : type.length;
    const int count = std::max(1, std::min(constantOr(call[2], bound), bound));
    return result(call, callText("kap_substring", call.text(0), call.integer(1), call.integer(2)),
                  ofLength(type, count));
}

Typed side(ScalarCall& call, const char* function) {
    const TypeSpec type = call.textType(0);
    const int bound = type.length == tsql::kMaxLength ? longest(type) : type.length;
    const int count = std::max(1, std::min(constantOr(call[1], bound), bound));
    return result(call, callText(function, call.text(0), call.integer(1)), ofLength(type, count));
}

Typed left(ScalarCall& call) {
    return side(call, "kap_left");
}
Typed right(ScalarCall& call) {
    return side(call, "kap_right");
}

Typed replace(ScalarCall& call) {
    const TypeSpec type = call.textType(0);
    return result(call, callText("kap_replace", call.text(0), call.text(1), call.text(2)),
                  ofLength(type, longest(type)));
}

Typed stuff(ScalarCall& call) {
    const TypeSpec type = joinedType(call.textType(0), call.textType(3));
    Typed value = result(
        call, callText("kap_stuff", call.text(0), call.integer(1), call.integer(2), call.text(3)),
        type);
    value.nullable = true;
    return value;
}

Typed charIndex(ScalarCall& call) {
    const std::string start = call.arguments.size() > 2 ? call.integer(2) : "1";
    return result(call, callText("kap_charindex", call.text(0), call.text(1), start),
                  {SqlType::Int});
}

Typed patternIndex(ScalarCall& call) {
    return result(call, callText("kap_patindex", call.text(0), call.text(1)), {SqlType::Int});
}

Typed replicate(ScalarCall& call) {
    const TypeSpec type = call.textType(0);
    Typed value = result(call, callText("kap_replicate", call.text(0), call.integer(1)),
                         ofLength(type, longest(type)));
    value.nullable = true;
    return value;
}

Typed space(ScalarCall& call) {
    const int count = std::max(1, constantOr(call[0], kMostBytes));
    Typed value = result(call, callText("kap_space", call.integer(0)), {SqlType::VarChar, count});
    value.nullable = true;
    return value;
}

// STR(number, length = 10, decimals = 0): right-aligned; stars when it does not fit.
Typed str(ScalarCall& call) {
    const std::string width = call.arguments.size() > 1 ? call.integer(1) : "10";
    const std::string decimals = call.arguments.size() > 2 ? call.integer(2) : "0";
    const int length =
        call.arguments.size() > 1 ? std::max(1, constantOr(call[1], kMostBytes)) : 10;
    return result(call, callText("kap_str", call.real(0), width, decimals),
                  {SqlType::VarChar, length});
}

Typed character(ScalarCall& call) {
    Typed value = result(call, callText("kap_char", call.integer(0)), {SqlType::Char, 1});
    value.nullable = true;
    return value;
}

Typed nationalCharacter(ScalarCall& call) {
    Typed value = result(call, callText("kap_nchar", call.integer(0)), {SqlType::NChar, 1});
    value.nullable = true;
    return value;
}

Typed firstUnit(ScalarCall& call) {
    Typed value = result(call, callText("kap_unit", call.text(0)), {SqlType::Int});
    value.nullable = true;
    return value;
}

// CONCAT(a, b...): everything as text, and null as no text.
Typed concatenated(ScalarCall& call) {
    std::string sql;
    TypeSpec type{SqlType::VarChar, 0};
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const TypeSpec own = call.textType(i);
        sql += (sql.empty() ? "ifnull(" : " || ifnull(") + call.text(i) + ", '')";
        if (tsql::isNational(own.type)) type.type = SqlType::NVarChar;
        const bool fits = own.length > 0 && type.length >= 0;
        type.length = fits ? type.length + own.length : tsql::kMaxLength;
    }
    if (type.length > longest(type)) type.length = longest(type);
    return Typed::expression("(" + sql + ")", type, false);
}

Typed quoteName(ScalarCall& call) {
    constexpr int kQuoted = 258;
    const std::string mark = call.arguments.size() > 1 ? call.text(1) : "'['";
    Typed value =
        result(call, callText("kap_quotename", call.text(0), mark), {SqlType::NVarChar, kQuoted});
    value.nullable = true;
    return value;
}

Typed soundCode(ScalarCall& call) {
    return result(call, callText("kap_soundex", call.text(0)), {SqlType::VarChar, 4});
}

Typed soundDifference(ScalarCall& call) {
    return result(call, callText("kap_difference", call.text(0), call.text(1)), {SqlType::Int});
}

Typed namePart(ScalarCall& call) {
    constexpr int kNameLength = 128;
    Typed value = result(call, callText("kap_parsename", call.text(0), call.integer(1)),
                         {SqlType::NVarChar, kNameLength});
    value.nullable = true;
    return value;
}

constexpr std::array kTextFunctions = std::to_array<ScalarFunction>({
    {"upper", 1, 1, sameText<kUpper>},
    {"lower", 1, 1, sameText<kLower>},
    {"ltrim", 1, 1, sameText<kTrimLeft>},
    {"rtrim", 1, 1, sameText<kTrimRight>},
    {"reverse", 1, 1, sameText<kReverse>},
    {"trim", 1, 1, trim},
    {"len", 1, 1, length},
    {"datalength", 1, 1, dataLength},
    {"substring", 3, 3, substring},
    {"left", 2, 2, left},
    {"right", 2, 2, right},
    {"replace", 3, 3, replace},
    {"stuff", 4, 4, stuff},
    {"charindex", 2, 3, charIndex},
    {"patindex", 2, 2, patternIndex},
    {"replicate", 2, 2, replicate},
    {"space", 1, 1, space},
    {"str", 1, 3, str},
    {"char", 1, 1, character},
    {"nchar", 1, 1, nationalCharacter},
    {"ascii", 1, 1, firstUnit},
    {"unicode", 1, 1, firstUnit},
    {"concat", 2, -1, concatenated},
    {"quotename", 1, 2, quoteName},
    {"soundex", 1, 1, soundCode},
    {"difference", 2, 2, soundDifference},
    {"parsename", 2, 2, namePart},
});

}  // namespace

std::span<const ScalarFunction> textFunctions() {
    return kTextFunctions;
}

}  // namespace kap::ado::embedded
