#include <algorithm>
#include <array>
#include <utility>

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
    return BoundExpression::expression(sql::call(fn::kIfnull, first.tree, second.tree), type,
                                       first.nullable && second.nullable);
}

BoundExpression coalesce(ScalarCall& call) {
    const auto type = commonType(call.arguments);
    if (!type) {
        throw tsql::ServerError(tsql::Message::CoalesceOfNulls, {}, call.line);
    }
    sql::Call first{fn::kCoalesce, {}};
    first.arguments.reserve(call.arguments.size());
    // As the server has it, COALESCE is null where any of its arguments can be; ISNULL is not.
    bool nullable = false;
    for (const BoundExpression& argument : call.arguments) {
        BoundExpression converted = call.binder.convertTo(argument, *type, call.line);
        nullable = nullable || converted.nullable;
        first.arguments.push_back(std::move(converted.tree));
    }
    return BoundExpression::expression(std::move(first), *type, nullable);
}

BoundExpression nullIf(ScalarCall& call) {
    if (call[0].nullLiteral) {
        throw tsql::ServerError(tsql::Message::NullifOfNull, {}, call.line);
    }
    sql::Expression equal =
        call.binder.compared(tsql::ComparisonOperator::Equal, call[0], call[1], call.line);
    return BoundExpression::expression(sql::when(std::move(equal), sql::null(), call[0].tree),
                                       call[0].type, true);
}

BoundExpression newIdentifier(ScalarCall& call) {
    // SQLite would make one for all rows.
    if (call.binder.bindsComputedColumn()) {
        throw tsql::unsupported("NEWID in a computed column", call.line);
    }
    constexpr int kBytes = 16;
    return BoundExpression::expression(sql::call(fn::kNewid), {SqlType::UniqueIdentifier, kBytes},
                                       false);
}

// What a default is made of is seen there; anywhere else it is none.
BoundExpression newSequentialIdentifier(ScalarCall& call) {
    throw tsql::ServerError(tsql::Message::NewSequentialIdOutsideDefault, {}, call.line);
}

// CHECKSUM(a, b...): texts that compare as equal give the same; BINARY_CHECKSUM tells them apart.
template <const fn::Function& kFunction>
BoundExpression checksum(ScalarCall& call) {
    sql::Call sum{kFunction, {}};
    sum.arguments.reserve(call.arguments.size());
    for (const BoundExpression& argument : call.arguments)
        sum.arguments.push_back(argument.tree);
    return BoundExpression::expression(std::move(sum), {SqlType::Int}, false);
}

// IDENTITY(type, seed, increment) numbers the rows that SELECT ... INTO writes; what writes them
// knows how, here it is nothing yet.
BoundExpression newIdentity(ScalarCall& call) {
    BoundExpression value = BoundExpression::expression(sql::null(), call[0].type, false);
    constexpr Identity kFirst;
    const auto number = [&](std::size_t index, std::int64_t otherwise) {
        const Value* constant = index < call.arguments.size() ? call[index].constant() : nullptr;
        const auto* given = std::get_if<std::int64_t>(constant);
        return given != nullptr ? *given : otherwise;
    };
    value.newIdentity = Identity{number(1, kFirst.seed), number(2, kFirst.increment)};
    return value;
}

// OPENROWSET(BULK file, kind).
BoundExpression wholeFile(ScalarCall& call) {
    const Value* kind = call[1].constant();
    const auto* word = kind == nullptr ? nullptr : std::get_if<std::string>(kind);
    SqlType type = SqlType::VarChar;
    if (word != nullptr && *word == "SINGLE_NCLOB") type = SqlType::NVarChar;
    if (word != nullptr && *word == "SINGLE_BLOB") type = SqlType::VarBinary;
    return BoundExpression::expression(sql::call(fn::kFile, call.text(0), call.text(1)),
                                       {type, tsql::kMaxLength}, true);
}

constexpr std::array kGeneralFunctions = std::to_array<ScalarFunction>({
    {"isnull", 2, 2, isNull},
    {"coalesce", 2, -1, coalesce},
    {"nullif", 2, 2, nullIf},
    {"newid", 0, 0, newIdentifier},
    {"newsequentialid", 0, 0, newSequentialIdentifier},
    {"checksum", 1, kMostArguments, checksum<fn::kChecksum>},
    {"binary_checksum", 1, kMostArguments, checksum<fn::kBinaryChecksum>},
    {"identity", 1, 3, newIdentity},
    {tsql::kBulkFile, 2, 2, wholeFile},
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
