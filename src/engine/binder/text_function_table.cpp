#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/collations.hpp"
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

BoundExpression result(ScalarCall& call, sql::Expression tree, const TypeSpec& type) {
    return BoundExpression::expression(std::move(tree), type, call.anyNullable());
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
    const auto* value = std::get_if<std::int64_t>(argument.constant());
    return value == nullptr ? std::nullopt : std::optional(*value);
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
int mostUnits(const TypeSpec& type) {
    return type.length == tsql::kMaxLength ? 0 : longest(type);
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
template <const fn::Function& kFunction>
BoundExpression sameText(ScalarCall& call) {
    return result(call, sql::call(kFunction, call.text(0)), call.textType(0));
}

BoundExpression trim(ScalarCall& call) {
    if (call.arguments.size() == 2) {
        return result(call, sql::call(fn::kTrimLetters, call.text(0), call.text(1)),
                      call.textType(0));
    }
    return result(call, sql::call(fn::kLtrim, sql::call(fn::kRtrim, call.text(0))),
                  call.textType(0));
}

BoundExpression length(ScalarCall& call) {
    return result(call, sql::call(fn::kLen, call.text(0)), countType(call[0]));
}

// The bytes that the server stores for the value.
BoundExpression dataLength(ScalarCall& call) {
    const BoundExpression& argument = call[0];
    const SqlType type = argument.type.type;
    if (tsql::isText(type)) {
        return result(call,
                      sql::call(fn::kTextBytes, argument.tree, tsql::isNational(type) ? 2 : 1),
                      countType(argument));
    }
    if (tsql::isBinary(type)) {
        return result(call, sql::call(fn::kLength, argument.tree), countType(argument));
    }
    if (tsql::isVariant(type)) {
        return result(call, sql::call(fn::kVariantBytes, argument.tree), {SqlType::Int});
    }
    return result(
        call, sql::when(sql::isNotNull(argument.tree), sql::number(tsql::bytesOf(argument.type))),
        {SqlType::Int});
}

BoundExpression substring(ScalarCall& call) {
    if (tsql::isBinary(call[0].type.type)) {
        return result(call,
                      sql::call(fn::kSubbytes, call[0].tree, call.integer(1), call.integer(2)),
                      {SqlType::VarBinary, call[0].type.length});
    }
    const TypeSpec type = call.textType(0);
    return result(call, sql::call(fn::kSubstring, call.text(0), call.integer(1), call.integer(2)),
                  ofLength(type, partLength(type, call[2])));
}

BoundExpression side(ScalarCall& call, const fn::Function& function) {
    const TypeSpec type = call.textType(0);
    return result(call, sql::call(function, call.text(0), call.integer(1)),
                  ofLength(type, partLength(type, call[1])));
}

BoundExpression left(ScalarCall& call) {
    return side(call, fn::kLeft);
}
BoundExpression right(ScalarCall& call) {
    return side(call, fn::kRight);
}

BoundExpression replace(ScalarCall& call) {
    TypeSpec type = call.textType(0);
    for (const BoundExpression& argument : call.arguments) {
        if (tsql::isNational(argument.type.type)) type.type = SqlType::NVarChar;
    }
    type = grown(type);
    if (const auto collation = commonCollation(call.arguments, "replace", call.line)) {
        return result(call,
                      sql::call(fn::kReplaceAs, packMatching(collation->matching), call.text(0),
                                call.text(1), call.text(2)),
                      type);
    }
    return result(
        call, sql::call(fn::kReplace, call.text(0), call.text(1), call.text(2), mostUnits(type)),
        type);
}

BoundExpression stuff(ScalarCall& call) {
    const TypeSpec type = joinedType(call.textType(0), call.textType(3));
    BoundExpression value = result(call,
                                   sql::call(fn::kStuff, call.text(0), call.integer(1),
                                             call.integer(2), call.text(3), mostUnits(type)),
                                   type);
    value.nullable = true;
    return value;
}

BoundExpression charIndex(ScalarCall& call) {
    if (const auto collation = commonCollation({call[0], call[1]}, "charindex", call.line)) {
        return result(call,
                      sql::call(fn::kCharindexAs, packMatching(collation->matching), call.text(0),
                                call.text(1), call.integer(2, 1)),
                      countType(call[1]));
    }
    return result(call, sql::call(fn::kCharindex, call.text(0), call.text(1), call.integer(2, 1)),
                  countType(call[1]));
}

BoundExpression patternIndex(ScalarCall& call) {
    if (const auto collation = commonCollation(call.arguments, "patindex", call.line)) {
        return result(call,
                      sql::call(fn::kPatindexAs, packMatching(collation->matching), call.text(0),
                                call.text(1)),
                      countType(call[1]));
    }
    return result(call, sql::call(fn::kPatindex, call.text(0), call.text(1)), countType(call[1]));
}

BoundExpression replicate(ScalarCall& call) {
    const TypeSpec type = grown(call.textType(0));
    BoundExpression value = result(
        call, sql::call(fn::kReplicate, call.text(0), call.integer(1), mostUnits(type)), type);
    value.nullable = true;
    return value;
}

BoundExpression space(ScalarCall& call) {
    BoundExpression value =
        result(call, sql::call(fn::kSpace, call.integer(0)), {SqlType::VarChar, lengthOf(call[0])});
    value.nullable = true;
    return value;
}

// STR(number, length = 10, decimals = 0): right-aligned; stars when it does not fit.
BoundExpression str(ScalarCall& call) {
    constexpr int kWidth = 10;
    const int length = call.arguments.size() > 1 ? lengthOf(call[1]) : kWidth;
    const sql::Expression width = call.integer(1, kWidth);
    return result(call, sql::call(fn::kStr, call.real(0), width, call.integer(2, 0)),
                  {SqlType::VarChar, length});
}

BoundExpression character(ScalarCall& call) {
    BoundExpression value = result(call, sql::call(fn::kChar, call.integer(0)), {SqlType::Char, 1});
    value.nullable = true;
    return value;
}

BoundExpression nationalCharacter(ScalarCall& call) {
    BoundExpression value =
        result(call, sql::call(fn::kNchar, call.integer(0)), {SqlType::NChar, 1});
    value.nullable = true;
    return value;
}

template <const fn::Function& kFunction>
BoundExpression firstCode(ScalarCall& call) {
    BoundExpression value = result(call, sql::call(kFunction, call.text(0)), {SqlType::Int});
    value.nullable = true;
    return value;
}

// CONCAT(a, b...): everything as text, and null as no text. What goes beyond the longest text is
// cut unless one of them is a varchar(max).
BoundExpression concatenated(ScalarCall& call) {
    sql::Chain chain{sql::ChainOperator::Join, {}};
    SqlType type = SqlType::VarChar;
    int length = 0;
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        if (call[i].nullLiteral) continue;
        const TypeSpec own = call.textType(i);
        chain.parts.push_back(sql::call(fn::kIfnull, call.text(i), sql::text("")));
        if (tsql::isNational(own.type)) type = SqlType::NVarChar;
        const bool fits = own.length != tsql::kMaxLength && length != tsql::kMaxLength;
        length = fits ? length + own.length : tsql::kMaxLength;
    }
    if (chain.parts.empty()) chain.parts.push_back(sql::text(""));
    const BoundExpression whole =
        BoundExpression::expression(std::move(chain), {type, tsql::kMaxLength}, false);
    const TypeSpec joined{type, length == tsql::kMaxLength ? length : std::max(length, 1)};
    if (joined.length <= longest(joined)) return whole.as(joined);
    return call.binder.castTo(whole, ofLength(joined, longest(joined)), 0, call.line);
}

BoundExpression quoteName(ScalarCall& call) {
    constexpr int kQuoted = 258;
    const sql::Expression mark = call.arguments.size() > 1 ? call.text(1) : sql::text("[");
    BoundExpression value =
        result(call, sql::call(fn::kQuotename, call.text(0), mark), {SqlType::NVarChar, kQuoted});
    value.nullable = true;
    return value;
}

BoundExpression soundCode(ScalarCall& call) {
    return result(call, sql::call(fn::kSoundex, call.text(0)), {SqlType::VarChar, 4});
}

BoundExpression soundDifference(ScalarCall& call) {
    return result(call, sql::call(fn::kDifference, call.text(0), call.text(1)), {SqlType::Int});
}

BoundExpression namePart(ScalarCall& call) {
    constexpr int kNameLength = 128;
    BoundExpression value = result(call, sql::call(fn::kParsename, call.text(0), call.integer(1)),
                                   {SqlType::NVarChar, kNameLength});
    value.nullable = true;
    return value;
}

constexpr std::array kTextFunctions = std::to_array<ScalarFunction>({
    {"upper", 1, 1, sameText<fn::kUpper>},
    {"lower", 1, 1, sameText<fn::kLower>},
    {"ltrim", 1, 1, sameText<fn::kLtrim>},
    {"rtrim", 1, 1, sameText<fn::kRtrim>},
    {"reverse", 1, 1, sameText<fn::kReverse>},
    {"trim", 1, 2, trim},
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
    {"ascii", 1, 1, firstCode<fn::kAscii>},
    {"unicode", 1, 1, firstCode<fn::kUnicode>},
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
