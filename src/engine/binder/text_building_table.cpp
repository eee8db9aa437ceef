#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

// The newer functions that build texts: CONCAT_WS, TRANSLATE, STRING_ESCAPE.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

namespace {

// CONCAT_WS(separator, a, b...): nulls are left out with their separator. The type is that of the
// texts together.
BoundExpression concatenatedWithSeparator(ScalarCall& call) {
    constexpr int kMostBytes = 8000;
    sql::Call joined{fn::kConcatWs, {call.text(0)}};
    const TypeSpec separator = call.textType(0);
    SqlType type = separator.type;
    int length = 0;
    bool unlimited = separator.length == tsql::kMaxLength;
    for (std::size_t i = 1; i < call.arguments.size(); ++i) {
        joined.arguments.push_back(call[i].nullLiteral ? sql::null() : call.text(i));
        if (call[i].nullLiteral) continue;
        const TypeSpec own = call.textType(i);
        if (tsql::isNational(own.type)) type = SqlType::NVarChar;
        unlimited = unlimited || own.length == tsql::kMaxLength;
        length += own.length + (i > 1 ? separator.length : 0);
    }
    BoundExpression whole =
        BoundExpression::expression(std::move(joined), {type, tsql::kMaxLength}, false);
    const int longest = tsql::isNational(type) ? kMostBytes / 2 : kMostBytes;
    if (unlimited) return whole;
    if (length <= longest) return whole.as({type, std::max(length, 1)});
    return call.binder.castTo(whole, {type, longest}, 0, call.line);
}

BoundExpression translated(ScalarCall& call) {
    return BoundExpression::expression(
        sql::call(fn::kTranslate, call.text(0), call.text(1), call.text(2)), call.textType(0),
        call.anyNullable());
}

// STRING_ESCAPE(text, 'json').
BoundExpression escapedAsJson(ScalarCall& call) {
    const Value* kind = call[1].constant();
    const auto* named = kind == nullptr ? nullptr : std::get_if<std::string>(kind);
    const bool json = named != nullptr && equalsIgnoringCase(*named, "json");
    if (!json) {
        throw ServerError(tsql::Message::InvalidParameterOfFunction, {"2", call.name()}, call.line);
    }
    return BoundExpression::expression(sql::call(fn::kStringEscape, call.text(0)),
                                       {SqlType::NVarChar, tsql::kMaxLength}, call[0].nullable);
}

// column.WRITE(part, offset, length), of a column that has no limit.
BoundExpression writtenPart(ScalarCall& call) {
    const tsql::TypeSpec type = call[0].type;
    const bool unlimited = type.length == tsql::kMaxLength && !tsql::isLarge(type.type) &&
                           (tsql::isText(type.type) || tsql::isBinary(type.type));
    if (!unlimited) {
        throw ServerError(tsql::Message::CannotCallMethods, {tsql::typeName(type.type)}, call.line);
    }
    const auto number = [&](std::size_t i) {
        return call.binder.convertTo(call[i], {SqlType::BigInt}, call.line).tree;
    };
    return BoundExpression::expression(
        sql::call(fn::kWritePart, call[0].tree,
                  call.binder.convertTo(call[1], type, call.line).tree, number(2), number(3)),
        type, true);
}

constexpr int kMostJoined = 125;

constexpr auto kTextBuilders = std::to_array<ScalarFunction>({
    {"concat_ws", 3, kMostJoined, concatenatedWithSeparator},
    {"translate", 3, 3, translated},
    {"string_escape", 2, 2, escapedAsJson},
    {tsql::kWriteMethod, 4, 4, writtenPart},
});

}  // namespace

std::span<const ScalarFunction> textBuilders() {
    return kTextBuilders;
}

}  // namespace kap::engine
