#include <array>

#include "engine/binder/function_table.hpp"
#include "tsql/server_error.hpp"

// The functions that read XML and JSON.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr tsql::TypeSpec kUnlimitedText{SqlType::NVarChar, tsql::kMaxLength};

// An argument that must be a text. Error 8116 for any other.
sql::Expression textOnly(const ScalarCall& call, std::size_t index) {
    const BoundExpression& argument = call.arguments[index];
    if (!tsql::isText(argument.type.type) && !argument.nullLiteral) call.refuseType(index);
    return argument.nullLiteral ? sql::null() : argument.tree;
}

BoundExpression xmlValue(ScalarCall& call) {
    if (call[0].markup != Markup::Xml) {
        throw ServerError(tsql::Message::MethodOfNoXml, {tsql::typeText(call[0].type)}, call.line);
    }
    return BoundExpression::expression(sql::call(fn::kXmlValue, call[0].tree, textOnly(call, 1)),
                                       kUnlimitedText, true);
}

BoundExpression isJsonCall(ScalarCall& call) {
    return BoundExpression::expression(sql::call(fn::kIsjson, textOnly(call, 0)), {SqlType::Int},
                                       call[0].nullable);
}

BoundExpression jsonValueCall(ScalarCall& call) {
    constexpr int kLongest = 4000;
    return BoundExpression::expression(
        sql::call(fn::kJsonValue, textOnly(call, 0), textOnly(call, 1)),
        {SqlType::NVarChar, kLongest}, true);
}

BoundExpression jsonQueryCall(ScalarCall& call) {
    const sql::Expression path = call.arguments.size() > 1 ? textOnly(call, 1) : sql::text("$");
    BoundExpression result = BoundExpression::expression(
        sql::call(fn::kJsonQuery, textOnly(call, 0), path), kUnlimitedText, true);
    result.markup = Markup::Json;
    return result;
}

BoundExpression jsonModifyCall(ScalarCall& call) {
    constexpr std::size_t kValue = 2;
    const BoundExpression& value = call[kValue];
    BoundExpression result = BoundExpression::expression(
        sql::call(fn::kJsonModify, textOnly(call, 0), textOnly(call, 1), value.tree, value.type,
                  value.markup == Markup::Json ? 1 : 0),
        kUnlimitedText, true);
    result.markup = Markup::Json;
    return result;
}

constexpr auto kMarkupFunctions = std::to_array<ScalarFunction>({
    {tsql::kXmlValue, 2, 2, xmlValue},
    {"isjson", 1, 1, isJsonCall},
    {"json_value", 2, 2, jsonValueCall},
    {"json_query", 1, 2, jsonQueryCall},
    {"json_modify", 3, 3, jsonModifyCall},
});

}  // namespace

std::span<const ScalarFunction> markupFunctions() {
    return kMarkupFunctions;
}

}  // namespace kap::engine
