#include "engine/binder/function_table.hpp"

#include <algorithm>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

bool ScalarCall::anyNullable() const {
    return std::any_of(arguments.begin(), arguments.end(),
                       [](const BoundExpression& argument) { return argument.nullable; });
}

sql::Expression ScalarCall::text(std::size_t index) const {
    const BoundExpression& argument = arguments[index];
    if (tsql::isText(argument.type.type) || argument.nullLiteral) return argument.tree;
    return binder.castTo(argument, textTypeOf(argument.type), 0, line).tree;
}

sql::Expression ScalarCall::integer(std::size_t index) const {
    return binder.convertTo(arguments[index], {SqlType::BigInt}, line).tree;
}

sql::Expression ScalarCall::integer(std::size_t index, std::int64_t otherwise) const {
    return index < arguments.size() ? integer(index) : sql::number(otherwise);
}

sql::Expression ScalarCall::shortInteger(std::size_t index) const {
    return binder.convertTo(arguments[index], {SqlType::Int}, line).tree;
}

sql::Expression ScalarCall::real(std::size_t index) const {
    return binder.convertTo(arguments[index], {SqlType::Float}, line).tree;
}

BoundExpression ScalarCall::instant(std::size_t index) const {
    const BoundExpression& argument = arguments[index];
    if (tsql::isDate(argument.type.type)) return argument;
    return binder.convertTo(argument, {SqlType::DateTime}, line);
}

TypeSpec ScalarCall::textType(std::size_t index) const {
    return textTypeOf(arguments[index].type);
}

BoundExpression ScalarCall::number(std::size_t index) const {
    const BoundExpression& argument = arguments[index];
    if (tsql::isNumber(argument.type.type)) return argument;
    if (tsql::isText(argument.type.type)) return binder.convertTo(argument, {SqlType::Float}, line);
    refuseType(index);
}

void ScalarCall::refuseType(std::size_t index) const {
    throw tsql::ServerError(tsql::Message::InvalidArgumentType,
                            {tsql::typeName(arguments[index].type.type),
                             plain::text(static_cast<std::int64_t>(index) + 1), name()},
                            line);
}

std::string_view ScalarCall::word(std::size_t index) const {
    const auto* column = std::get_if<tsql::ColumnReference>(&syntax.arguments[index]->node);
    if (column == nullptr || column->name.parts.size() != 1) {
        throw tsql::ServerError(tsql::Message::InvalidParameterOfFunction,
                                {plain::text(static_cast<std::int64_t>(index) + 1), name()}, line);
    }
    return column->name.last();
}

std::string ScalarCall::name() const {
    return asciiLower(syntax.name.last());
}

const ScalarFunction* findFunction(std::string_view name) {
    for (const auto table :
         {textFunctions(), numberFunctions(), dateFunctions(), generalFunctions(),
          principalFunctions(), cultureFunctions(), byteFunctions(), variantFunctions(),
          markupFunctions(), textBuilders(), collatingFunctions()}) {
        const auto found =
            std::find_if(table.begin(), table.end(), [&](const ScalarFunction& function) {
                return equalsIgnoringCase(function.name, name);
            });
        if (found != table.end()) return &*found;
    }
    return nullptr;
}

}  // namespace kap::engine
