#include <utility>

#include "engine/binder/binder.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/sqlite/row_functions.hpp"
#include "engine/values/json_text.hpp"
#include "tsql/server_error.hpp"

// OPENJSON: its host's name has a point before it, as no stored name has.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr tsql::TypeSpec kJsonText{SqlType::NVarChar, tsql::kMaxLength};

// The path of a column without one is the member of its name, whatever letters it has.
std::string pathOf(const tsql::JsonColumn& column) {
    const std::string path = column.path.value_or("$." + jsonString(column.name));
    try {
        (void)parseJsonPath(path);
    } catch (const ServerError& error) {
        throw error.at(column.line);
    }
    return (column.asJson ? "j" : "v") + path;
}

}  // namespace

// OPENJSON(text [, path]) has the columns key, value and type, or those of WITH.
BoundQuery Binder::jsonRows(const tsql::FunctionTable& call, int line, Scope& scope) {
    if (call.arguments.empty() || call.arguments.size() > 2) {
        throw ServerError(tsql::Message::WrongArgumentRange, {"openjson", "1", "2"}, line);
    }
    Scope constants;
    constants.outer = scope.outer;
    sql::Call opened{fn::kRowsOfFunction, {sql::text(".openjson")}};
    for (const auto& argument : call.arguments) {
        const BoundExpression bound = value(*argument, constants);
        if (!tsql::isText(bound.type.type) && !bound.nullLiteral) {
            throw ServerError(tsql::Message::InvalidArgumentType,
                              {tsql::typeName(bound.type.type),
                               &argument == &call.arguments[0] ? "1" : "2", "openjson"},
                              line);
        }
        opened.arguments.push_back(convertTo(bound, kJsonText, line).tree);
    }
    if (call.arguments.size() == 1) opened.arguments.push_back(sql::text("$"));
    if (!call.jsonColumns.empty()) return jsonColumns(call, std::move(opened), line);
    constexpr int kKeyLength = 4000;
    BoundQuery rows;
    rows.columns.push_back({"key", BoundExpression::expression(
                                       numberedColumn(0), {SqlType::NVarChar, kKeyLength}, false)});
    rows.columns.push_back(
        {"value", BoundExpression::expression(numberedColumn(1), kJsonText, true)});
    rows.columns.push_back(
        {"type", BoundExpression::expression(numberedColumn(2), {SqlType::Int}, false)});
    sql::Select select;
    for (std::size_t i = 0; i < rows.columns.size(); ++i)
        select.items.push_back({numberedColumn(i)});
    select.from = sql::from(sql::RowsOf{std::move(opened)});
    rows.tree = {std::move(select)};
    return rows;
}

// What the paths find are texts, which become the types of the columns.
BoundQuery Binder::jsonColumns(const tsql::FunctionTable& call, sql::Call opened, int line) const {
    if (call.jsonColumns.size() + 2 > kRowFunctionArguments) {
        throw tsql::unsupported("OPENJSON WITH so many columns", line);
    }
    BoundQuery rows;
    sql::Select select;
    for (const tsql::JsonColumn& column : call.jsonColumns) {
        const std::size_t place = rows.columns.size();
        opened.arguments.push_back(sql::text(pathOf(column)));
        const BoundExpression text =
            BoundExpression::expression(numberedColumn(place), kJsonText, true);
        BoundExpression value = castTo(text, column.type, 0, column.line);
        select.items.push_back(numberedItem(value.tree, place));
        value = value.readBy(numberedColumn(place));
        if (column.asJson) value.markup = Markup::Json;
        rows.columns.push_back({column.name, std::move(value)});
    }
    select.from = sql::from(sql::RowsOf{std::move(opened)});
    rows.tree = {std::move(select)};
    return rows;
}

}  // namespace kap::engine
