#include <algorithm>
#include <array>
#include <optional>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kMostTextBytes = 8000;
// That CONCAT takes.
constexpr int kMostTexts = 254;

BoundExpression result(ScalarCall& call, std::string sql, TypeSpec type) {
    return BoundExpression::expression(std::move(sql), type, call.anyNullable());
}

TypeSpec ofLength(TypeSpec type, int length) {
    type.length = length;
    return type;
}

int longest(const TypeSpec& type) {
    return tsql::isNational(type.type) ? kMostTextBytes / 2 : kMostTextBytes;
}

// The value of a whole-number literal.
std::optional<std::int64_t> constantOf(const BoundExpression& argument) {
    if (!argument.constant || !std::holds_alternative<std::int64_t>(*argument.constant))
        return std::nullopt;
    return std::get<std::int64_t>(*argument.constant);
}

// A length as a literal says it, within bounds; the longest when it is computed.
int lengthOf(const BoundExpression& argument) {
    return static_cast<int>(
        std::clamp<std::int64_t>(constantOf(argument).value_or(kMostTextBytes), 1, kMostTextBytes));
}

// Of varchar(max) and its kin, whose positions and lengths need a bigint on the server.
bool isMax(const TypeSpec& type) {
    return type.length == tsql::kMaxLength && !tsql::isLarge(type.type);
}

TypeSpec countType(const BoundExpression& text) {
    return {isMax(text.type) ? SqlType::BigInt : SqlType::Int};
}

// The units that a result of this type holds at most, for the functions that make texts longer; 0:
// any number.
std::string limitArgument(const TypeSpec& type) {
    return plain::text(type.length == tsql::kMaxLength ? 0 : longest(type));
}

// What a function that makes texts longer gives for a text of this type: as many as fit in 8,000
// bytes, without limit for varchar(max).
TypeSpec grown(const TypeSpec& type) {
    return ofLength(type, type.length == tsql::kMaxLength ? tsql::kMaxLength : longest(type));
}

// The length of a part of a text, as the number of characters asked for tells.
int partLength(const TypeSpec& type, const BoundExpression& count) {
    const int bound = type.length == tsql::kMaxLength ? longest(type) : type.length;
    const auto wanted = constantOf(count);
    if (!wanted || *wanted > bound) return type.length;
    return std::max(1, static_cast<int>(*wanted));
}

// Functions of one text that give a text of the same length.
template <const char* const& kFunction>
BoundExpression sameText(ScalarCall& call) {
    return result(call, callText(kFunction, call.text(0)), call.textType(0));
}

constexpr const char* kUpper = "kap_upper";
constexpr const char* kLower = "kap_lower";
constexpr const char* kTrimLeft = "kap_ltrim";
constexpr const char* kTrimRight = "kap_rtrim";
constexpr const char* kReverse = "kap_reverse";

BoundExpression trim(ScalarCall& call) {
    return result(call, callText("kap_ltrim", callText("kap_rtrim", call.text(0))),
                  call.textType(0));
}

BoundExpression length(ScalarCall& call) {
    return result(call, callText("kap_len", call.text(0)), countType(call[0]));
}

// The bytes that the server stores for the value.
BoundExpression dataLength(ScalarCall& call) {
    const BoundExpression& argument = call[0];
    const SqlType type = argument.type.type;
    if (tsql::isText(type)) {
        return result(call,
                      callText("kap_text_bytes", argument.sql, tsql::isNational(type) ? "2" : "1"),
                      countType(argument));
    }
    if (tsql::isBinary(type)) {
        return result(call, callText("length", argument.sql), countType(argument));
    }
    return result(call,
                  "(CASE WHEN " + argument.sql + " IS NOT NULL THEN " +
                      plain::text(tsql::bytesOf(argument.type)) + " END)",
                  {SqlType::Int});
}

BoundExpression substring(ScalarCall& call) {
    if (tsql::isBinary(call[0].type.type)) {
        return result(call, callText("kap_subbytes", call[0].sql, call.integer(1), call.integer(2)),
                      {SqlType::VarBinary, call[0].type.length});
    }
    const TypeSpec type = call.textType(0);
    return result(call, callText("kap_substring", call.text(0), call.integer(1), call.integer(2)),
                  ofLength(type, partLength(type, call[2])));
}

BoundExpression side(ScalarCall& call, const char* function) {
    const TypeSpec type = call.textType(0);
    return result(call, callText(function, call.text(0), call.integer(1)),
                  ofLength(type, partLength(type, call[1])));
}

BoundExpression left(ScalarCall& call) {
    return side(call, "kap_left");
}
BoundExpression right(ScalarCall& call) {
    return side(call, "kap_right");
}

BoundExpression replace(ScalarCall& call) {
    TypeSpec type = call.textType(0);
    for (const BoundExpression& argument : call.arguments) {
        if (tsql::isNational(argument.type.type)) type.type = SqlType::NVarChar;
    }
    type = grown(type);
    return result(
        call,
        callText("kap_replace", call.text(0), call.text(1), call.text(2), limitArgument(type)),
        type);
}

BoundExpression stuff(ScalarCall& call) {
    const TypeSpec type = joinedType(call.textType(0), call.textType(3));
    BoundExpression value = result(call,
                                   callText("kap_stuff", call.text(0), call.integer(1),
                                            call.integer(2), call.text(3), limitArgument(type)),
                                   type);
    value.nullable = true;
    return value;
}

BoundExpression charIndex(ScalarCall& call) {
    const std::string start = call.arguments.size() > 2 ? call.integer(2) : "1";
    return result(call, callText("kap_charindex", call.text(0), call.text(1), start),
                  countType(call[1]));
}

BoundExpression patternIndex(ScalarCall& call) {
    return result(call, callText("kap_patindex", call.text(0), call.text(1)), countType(call[1]));
}

BoundExpression replicate(ScalarCall& call) {
    const TypeSpec type = grown(call.textType(0));
    BoundExpression value = result(
        call, callText("kap_replicate", call.text(0), call.integer(1), limitArgument(type)), type);
    value.nullable = true;
    return value;
}

BoundExpression space(ScalarCall& call) {
    BoundExpression value =
        result(call, callText("kap_space", call.integer(0)), {SqlType::VarChar, lengthOf(call[0])});
    value.nullable = true;
    return value;
}

// STR(number, length = 10, decimals = 0): right-aligned; stars when it does not fit.
BoundExpression str(ScalarCall& call) {
    const std::string width = call.arguments.size() > 1 ? call.integer(1) : "10";
    const std::string decimals = call.arguments.size() > 2 ? call.integer(2) : "0";
    const int length = call.arguments.size() > 1 ? lengthOf(call[1]) : 10;
    return result(call, callText("kap_str", call.real(0), width, decimals),
                  {SqlType::VarChar, length});
}

BoundExpression character(ScalarCall& call) {
    BoundExpression value = result(call, callText("kap_char", call.integer(0)), {SqlType::Char, 1});
    value.nullable = true;
    return value;
}

BoundExpression nationalCharacter(ScalarCall& call) {
    BoundExpression value =
        result(call, callText("kap_nchar", call.integer(0)), {SqlType::NChar, 1});
    value.nullable = true;
    return value;
}

template <const char* const& kFunction>
BoundExpression firstCode(ScalarCall& call) {
    BoundExpression value = result(call, callText(kFunction, call.text(0)), {SqlType::Int});
    value.nullable = true;
    return value;
}

constexpr const char* kAscii = "kap_ascii";
constexpr const char* kUnicode = "kap_unicode";

// CONCAT(a, b...): everything as text, and null as no text. What goes beyond the longest text is
// cut unless one of them is a varchar(max).
BoundExpression concatenated(ScalarCall& call) {
    std::string sql;
    SqlType type = SqlType::VarChar;
    int length = 0;
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        if (call[i].nullLiteral) continue;
        const TypeSpec own = call.textType(i);
        sql += (sql.empty() ? "ifnull(" : " || ifnull(") + call.text(i) + ", '')";
        if (tsql::isNational(own.type)) type = SqlType::NVarChar;
        const bool fits = own.length != tsql::kMaxLength && length != tsql::kMaxLength;
        length = fits ? length + own.length : tsql::kMaxLength;
    }
    if (sql.empty()) sql = "''";
    const BoundExpression whole =
        BoundExpression::expression("(" + sql + ")", {type, tsql::kMaxLength}, false);
    const TypeSpec joined{type, length == tsql::kMaxLength ? length : std::max(length, 1)};
    if (joined.length <= longest(joined)) return whole.as(joined);
    return call.binder.castTo(whole, ofLength(joined, longest(joined)), 0, call.line);
}

BoundExpression quoteName(ScalarCall& call) {
    constexpr int kQuoted = 258;
    const std::string mark = call.arguments.size() > 1 ? call.text(1) : "'['";
    BoundExpression value =
        result(call, callText("kap_quotename", call.text(0), mark), {SqlType::NVarChar, kQuoted});
    value.nullable = true;
    return value;
}

BoundExpression soundCode(ScalarCall& call) {
    return result(call, callText("kap_soundex", call.text(0)), {SqlType::VarChar, 4});
}

BoundExpression soundDifference(ScalarCall& call) {
    return result(call, callText("kap_difference", call.text(0), call.text(1)), {SqlType::Int});
}

BoundExpression namePart(ScalarCall& call) {
    constexpr int kNameLength = 128;
    BoundExpression value = result(call, callText("kap_parsename", call.text(0), call.integer(1)),
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
    {"ascii", 1, 1, firstCode<kAscii>},
    {"unicode", 1, 1, firstCode<kUnicode>},
    {"concat", 2, kMostTexts, concatenated},
    {"quotename", 1, 2, quoteName},
    {"soundex", 1, 1, soundCode},
    {"difference", 2, 2, soundDifference},
    {"parsename", 2, 2, namePart},
});

}  // namespace

std::span<const ScalarFunction> textFunctions() {
    return kTextFunctions;
}

}  // namespace kap::engine
