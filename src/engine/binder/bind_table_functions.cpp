#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/binder.hpp"
#include "engine/binder/server_functions.hpp"
#include "engine/binder/type_rules.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/sqlite/row_functions.hpp"
#include "tsql/server_error.hpp"

// Functions that return tables, in FROM. One that returns a query stands as this query, like a view
// with parameters; the rows of one that fills a table are asked of the session.
namespace kap::engine {

using tsql::ServerError;

namespace {

constexpr int kDeepestFunctions = 32;

bool isServersOwn(const tsql::ObjectName& name) {
    static constexpr auto kRowFunctions = std::to_array<std::string_view>(
        {"fn_builtin_permissions", "fn_dblog", "fn_dump_dblog", "fn_get_audit_file", "fn_get_sql",
         "fn_listextendedproperty", "fn_my_permissions", "fn_servershareddrives",
         "fn_trace_geteventinfo", "fn_trace_getfilterinfo", "fn_trace_getinfo", "fn_trace_gettable",
         "fn_virtualfilestats", "fn_virtualservernodes"});
    const std::string last = asciiLower(name.last());
    const bool prefixed = name.parts.size() > 1 && equalsIgnoringCase(name.parts.front(), "sys");
    return prefixed || last.starts_with("dm_") ||
           std::ranges::find(kRowFunctions, last) != kRowFunctions.end() || isServerFunction(last);
}

// Also a query is given the columns that it reads.
bool readsColumns(const BoundExpression& value) {
    return sql::contains(value.tree, [](const sql::Kind& kind) {
        return std::holds_alternative<sql::Column>(kind) || sql::holdsQuery(kind);
    });
}

}  // namespace

BoundSource Binder::functionTable(const tsql::FunctionTable& call, int line, Scope& scope) {
    const std::string stored = followedName(call.name, schema_, catalogue());
    const Function* function = stored.empty() ? nullptr : catalogue().findFunction(stored);
    BoundQuery rows;
    if (function != nullptr && function->returnsTable()) {
        std::vector<BoundExpression> arguments = functionArguments(call, *function, line, scope);
        if (function->rows != nullptr) {
            rows = inlineRows(*function, std::move(arguments), line);
        } else {
            sql::Call filled{fn::kRowsOfFunction, {sql::text(function->name)}};
            for (BoundExpression& value : arguments)
                filled.arguments.push_back(std::move(value.tree));
            sql::Select select;
            for (const Column& column : function->columns) {
                const std::size_t place = rows.columns.size();
                select.items.push_back({numberedColumn(place)});
                rows.columns.push_back(
                    {column.name, BoundExpression::expression(numberedColumn(place), column.type,
                                                              column.nullable)});
            }
            select.from = sql::from(sql::RowsOf{std::move(filled)});
            rows.tree = {std::move(select)};
        }
        readsOtherRows_ = true;
    } else if (call.name.parts.size() == 1 &&
               equalsIgnoringCase(call.name.last(), "string_split")) {
        rows = splitText(call, line, scope);
    } else if (call.name.parts.size() == 1 && equalsIgnoringCase(call.name.last(), "openjson")) {
        rows = jsonRows(call, line, scope);
    } else if (equalsIgnoringCase(call.name.last(), "fn_helpcollations")) {
        rows = collationRows();
    } else {
        refuseOtherServer(call.name);
        refuseXmlMethod(call.name);
        if (isServersOwn(call.name)) throw tsql::unsupported(call.name.text(), line);
        throw ServerError(tsql::Message::InvalidObject, {call.name.text()}, line);
    }
    const bool named = !call.alias.empty();
    BoundSource source = querySource(std::move(rows), call.columnAliases,
                                     named ? call.alias : call.name.last(), line);
    if (!named) source.sources.front().object = stored;
    return source;
}

std::vector<BoundExpression> Binder::functionArguments(const tsql::FunctionTable& call,
                                                       const Function& function, int line,
                                                       Scope& scope) {
    const std::size_t wanted = function.parameters.size();
    if (call.arguments.size() < wanted) {
        throw ServerError(tsql::Message::TooFewArguments, {call.name.text()}, line);
    }
    if (call.arguments.size() > wanted) {
        throw ServerError(tsql::Message::TooManyArguments, {call.name.text()}, line).withState(3);
    }
    std::vector<BoundExpression> values;
    for (std::size_t i = 0; i < wanted; ++i) {
        Scope constants;
        constants.outer = scope.outer;
        const tsql::Expression& argument = *call.arguments[i];
        const BoundExpression bound = std::holds_alternative<tsql::DefaultArgument>(argument.node)
                                          ? defaultArgument(function, i, line)
                                          : value(argument, constants);
        values.push_back(convertTo(bound, function.parameters[i].type, line));
    }
    return values;
}

// The query has names of its own, so that columns of the query around are given to it as values.
BoundQuery Binder::inlineRows(const Function& function, std::vector<BoundExpression> arguments,
                              int line) {
    if (openFunctions_ >= kDeepestFunctions) {
        throw ServerError(tsql::Message::NestingLevelExceeded, {}, line);
    }
    const bool correlated = std::ranges::any_of(arguments, readsColumns);
    GivenValues given;
    std::vector<GivenValues*> around = givenTo_;
    ParameterValues parameters;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        BoundExpression value = std::move(arguments[i]);
        value.plainColumn = false;
        if (correlated && value.constant() == nullptr && !value.nullLiteral) {
            value = value.readBy(given.given(value.tree));
        }
        parameters.values.emplace_back(function.parameters[i].name, std::move(value));
    }
    if (correlated) around.push_back(&given);
    parameters.givenAround = around.size();
    const Restored to(givenTo_, std::move(around));
    const Restored inText(constantsStand_, correlated ? Constants::InText : constantsStand_);
    const Restored own(parameters_, std::move(parameters));
    const Restored names(commonNames_, {});
    const Restored schema(schema_, std::string(schemaOf(function.name)));
    const Restored deeper(openFunctions_, openFunctions_ + 1);
    BoundQuery rows = query(*function.rows, nullptr, QueryPlace::Nested);
    if (!correlated) return rows;
    BoundSource source = givenRows(querySource(std::move(rows), {}, "rows", line), {}, given, line);
    BoundQuery result;
    sql::Select select;
    for (SourceColumn& column : source.sources.front().columns) {
        select.items.push_back(numberedItem(column.value.tree, result.columns.size()));
        result.columns.push_back({std::move(column.name), std::move(column.value)});
    }
    select.from = std::move(source.from);
    result.tree = {std::move(select)};
    return result;
}

// STRING_SPLIT(text, separator): its host's name has a point before it, as no stored name has.
BoundQuery Binder::splitText(const tsql::FunctionTable& call, int line, Scope& scope) {
    constexpr std::size_t kArguments = 2;
    if (call.arguments.size() != kArguments) {
        throw ServerError(tsql::Message::WrongArgumentCount, {"string_split", "2"}, line);
    }
    Scope constants;
    constants.outer = scope.outer;
    const BoundExpression text = value(*call.arguments[0], constants);
    const BoundExpression separator = value(*call.arguments[1], constants);
    const tsql::TypeSpec type = textTypeOf(text.type);
    const tsql::TypeSpec one{tsql::SqlType::NVarChar, tsql::kMaxLength};
    BoundQuery rows;
    rows.columns.push_back({"value", BoundExpression::expression(numberedColumn(0), type, true)});
    sql::Expression split =
        sql::call(fn::kRowsOfFunction, sql::text(".string_split"), convertTo(text, type, line).tree,
                  convertTo(separator, one, line).tree);
    rows.tree = {sql::one(numberedColumn(0), sql::from(sql::RowsOf{std::move(split)}))};
    return rows;
}

}  // namespace kap::engine
