#include <algorithm>
#include <array>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

// That a call within the database takes.
constexpr int kMostArguments = 127;

// ISNULL has the type of its first argument; the second is brought to it.
BoundExpression isNull(ScalarCall& call) {
    const TypeSpec type = call[0].nullLiteral ? call[1].type : call[0].type;
    const BoundExpression first = call.binder.convertTo(call[0], type, call.line);
    const BoundExpression second = call.binder.convertTo(call[1], type, call.line);
    return BoundExpression::expression(callText("ifnull", first.sql, second.sql), type,
                                       first.nullable && second.nullable);
}

BoundExpression coalesce(ScalarCall& call) {
    const auto type = commonType(call.arguments);
    if (!type) {
        throw tsql::ServerError(tsql::Message::CoalesceOfNulls, {}, call.line);
    }
    std::string sql;
    // As the server has it, COALESCE is null where any of its arguments can be; ISNULL is not.
    bool nullable = false;
    for (const BoundExpression& argument : call.arguments) {
        const BoundExpression converted = call.binder.convertTo(argument, *type, call.line);
        sql += (sql.empty() ? "" : ", ") + converted.sql;
        nullable = nullable || converted.nullable;
    }
    return BoundExpression::expression("coalesce(" + sql + ")", *type, nullable);
}

BoundExpression nullIf(ScalarCall& call) {
    if (call[0].nullLiteral) {
        throw tsql::ServerError(tsql::Message::NullifOfNull, {}, call.line);
    }
    const std::string equal =
        call.binder.compared(tsql::ComparisonOperator::Equal, call[0], call[1], call.line);
    return BoundExpression::expression(
        "(CASE WHEN " + equal + " THEN NULL ELSE " + call[0].sql + " END)", call[0].type, true);
}

BoundExpression newIdentifier(ScalarCall& call) {
    // SQLite would make one for all rows.
    if (call.binder.bindsComputedColumn()) {
        throw tsql::unsupported("NEWID in a computed column", call.line);
    }
    constexpr int kBytes = 16;
    return BoundExpression::expression("kap_newid()", {SqlType::UniqueIdentifier, kBytes}, false);
}

// What a default is made of is seen there; anywhere else it is none.
BoundExpression newSequentialIdentifier(ScalarCall& call) {
    throw tsql::ServerError(tsql::Message::NewSequentialIdOutsideDefault, {}, call.line);
}

// CHECKSUM(a, b...): texts that compare as equal give the same; BINARY_CHECKSUM tells them apart.
template <const char* const& kFunction>
BoundExpression checksum(ScalarCall& call) {
    std::string arguments;
    for (const BoundExpression& argument : call.arguments)
        arguments += (arguments.empty() ? "" : ", ") + argument.sql;
    return BoundExpression::expression(callText(kFunction, arguments), {SqlType::Int}, false);
}

constexpr const char* kChecksum = "kap_checksum";
constexpr const char* kBinaryChecksum = "kap_binary_checksum";

// IDENTITY(type, seed, increment) numbers the rows that SELECT ... INTO writes; what writes them
// knows how, here it is nothing yet.
BoundExpression newIdentity(ScalarCall& call) {
    BoundExpression value = BoundExpression::expression("NULL", call[0].type, false);
    constexpr Identity kFirst;
    const auto number = [&](std::size_t index, std::int64_t otherwise) {
        const bool given = index < call.arguments.size() && call[index].constant &&
                           std::holds_alternative<std::int64_t>(*call[index].constant);
        return given ? std::get<std::int64_t>(*call[index].constant) : otherwise;
    };
    value.newIdentity = {number(1, kFirst.seed), number(2, kFirst.increment)};
    return value;
}

constexpr std::array kGeneralFunctions = std::to_array<ScalarFunction>({
    {"isnull", 2, 2, isNull},
    {"coalesce", 2, -1, coalesce},
    {"nullif", 2, 2, nullIf},
    {"newid", 0, 0, newIdentifier},
    {"newsequentialid", 0, 0, newSequentialIdentifier},
    {"checksum", 1, kMostArguments, checksum<kChecksum>},
    {"binary_checksum", 1, kMostArguments, checksum<kBinaryChecksum>},
    {"identity", 1, 3, newIdentity},
});

}  // namespace

bool isSequentialIdentifier(const tsql::Expression& value) {
    const auto* call = std::get_if<tsql::FunctionCall>(&value.node);
    return call != nullptr && call->name.parts.size() == 1 && call->arguments.empty() &&
           equalsIgnoringCase(call->name.last(), "newsequentialid");
}

std::span<const ScalarFunction> generalFunctions() {
    return kGeneralFunctions;
}

}  // namespace kap::engine
