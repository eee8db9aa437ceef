#include <array>

#include "engine/binder/function_table.hpp"
#include "tsql/server_error.hpp"

// FORMAT, PARSE and TRY_PARSE.
namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

// The country, or no text for that of the session's language.
sql::Expression cultureOf(const ScalarCall& call) {
    constexpr std::size_t kCulture = 2;
    return call.arguments.size() > kCulture ? call.text(kCulture) : sql::text("");
}

BoundExpression formatted(ScalarCall& call) {
    constexpr int kLongest = 4000;
    const BoundExpression& value = call[0];
    if (value.nullLiteral) return BoundExpression::nullOf({SqlType::NVarChar, kLongest});
    if (!tsql::isNumber(value.type.type) && !tsql::isDate(value.type.type)) {
        throw tsql::ServerError(tsql::Message::InvalidArgumentType,
                                {tsql::typeName(value.type.type), "1", "format"}, call.line);
    }
    return BoundExpression::expression(
        sql::call(fn::kFormat, value.tree, value.type, call.text(1), cultureOf(call)),
        {SqlType::NVarChar, kLongest}, true);
}

// PARSE(text AS type USING culture): the parser gives the type as a NULL of it.
BoundExpression parsedBy(ScalarCall& call, const fn::Function& function) {
    const TypeSpec type = call[1].type;
    if (tsql::isText(type.type) || tsql::isBinary(type.type) || type.type == SqlType::Bit ||
        type.type == SqlType::UniqueIdentifier) {
        throw tsql::ServerError(tsql::Message::InvalidParseType, {tsql::typeName(type.type)},
                                call.line);
    }
    return BoundExpression::expression(sql::call(function, call.text(0), type, cultureOf(call)),
                                       type, true);
}

BoundExpression parsed(ScalarCall& call) {
    return parsedBy(call, fn::kParse);
}

BoundExpression tryParsed(ScalarCall& call) {
    return parsedBy(call, fn::kTryParse);
}

constexpr std::array kCultureFunctions = std::to_array<ScalarFunction>({
    {"format", 2, 3, formatted},
    {"parse", 2, 3, parsed},
    {"try_parse", 2, 3, tryParsed},
});

}  // namespace

std::span<const ScalarFunction> cultureFunctions() {
    return kCultureFunctions;
}

}  // namespace kap::engine
