#include <array>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/binder/function_table.hpp"
#include "engine/binder/type_rules.hpp"
#include "tsql/server_error.hpp"

// Digests, compressed and random bytes, and messages that are put together.
namespace kap::engine {

using tsql::SqlType;
using tsql::TypeSpec;

namespace {

constexpr int kLongestBinary = 8000;
constexpr int kFormattedLength = 2048;
// FORMATMESSAGE takes so many values for the places of its text.
constexpr int kMostPlaces = 20;

BoundExpression hashBytes(ScalarCall& call) {
    const SqlType type = call[1].type.type;
    const bool taken = call[1].nullLiteral || tsql::isText(type) || tsql::isBinary(type);
    if (!taken || tsql::isLarge(type)) call.refuseType(1);
    const BoundExpression bytes =
        call.binder.castTo(call[1], {SqlType::VarBinary, tsql::kMaxLength}, 0, call.line);
    return BoundExpression::expression(sql::call(fn::kHashbytes, call.text(0), bytes.tree),
                                       {SqlType::VarBinary, kLongestBinary}, true);
}

// COMPRESS of a text compresses the bytes that it is kept in.
BoundExpression compressed(ScalarCall& call) {
    const SqlType type = call[0].type.type;
    const bool taken = call[0].nullLiteral || tsql::isText(type) || tsql::isBinary(type);
    if (!taken || tsql::isLarge(type)) call.refuseType(0);
    const TypeSpec bytes{SqlType::VarBinary, tsql::kMaxLength};
    const BoundExpression value = call.binder.castTo(call[0], bytes, 0, call.line);
    return BoundExpression::expression(sql::call(fn::kCompress, value.tree), bytes,
                                       call.anyNullable());
}

BoundExpression decompressed(ScalarCall& call) {
    const SqlType type = call[0].type.type;
    const bool taken = call[0].nullLiteral || tsql::isBinary(type);
    if (!taken || tsql::isLarge(type)) call.refuseType(0);
    return BoundExpression::expression(sql::call(fn::kDecompress, call[0].tree),
                                       {SqlType::VarBinary, tsql::kMaxLength}, call.anyNullable());
}

// The seed makes no difference to bytes that the system makes.
BoundExpression randomBytes(ScalarCall& call) {
    return BoundExpression::expression(sql::call(fn::kRandomBytes, call.shortInteger(0)),
                                       {SqlType::VarBinary, kLongestBinary}, true);
}

// Whether a value may stand for a place of a message.
bool fills(const BoundExpression& value) {
    const SqlType type = value.type.type;
    const bool whole =
        type == SqlType::TinyInt || type == SqlType::SmallInt || type == SqlType::Int;
    return value.nullLiteral || whole ||
           (!tsql::isLarge(type) && type != SqlType::Timestamp &&
            (tsql::isText(type) || tsql::isBinary(type)));
}

// FORMATMESSAGE(text, values...). A number names one of the server's messages, which are not here.
BoundExpression formatMessage(ScalarCall& call) {
    const TypeSpec type{SqlType::NVarChar, kFormattedLength};
    for (std::size_t i = 1; i < call.arguments.size(); ++i) {
        if (fills(call[i])) continue;
        throw tsql::ServerError(
            tsql::Message::NoSubstitutionParameter,
            {tsql::typeName(call[i].type.type), plain::text(static_cast<std::int64_t>(i) + 1)},
            call.line);
    }
    if (tsql::isInteger(call[0].type.type)) return BoundExpression::nullOf(type);
    sql::Call message{fn::kFormatmessage, {call.text(0)}};
    message.arguments.reserve(call.arguments.size());
    for (std::size_t i = 1; i < call.arguments.size(); ++i) {
        const bool whole = tsql::isInteger(call[i].type.type);
        message.arguments.push_back(whole ? call[i].tree : call.text(i));
    }
    return BoundExpression::expression(std::move(message), type, true);
}

constexpr std::array kByteFunctions = std::to_array<ScalarFunction>({
    {"hashbytes", 2, 2, hashBytes},
    {"compress", 1, 1, compressed},
    {"decompress", 1, 1, decompressed},
    {"crypt_gen_random", 1, 2, randomBytes},
    {"formatmessage", 1, 1 + kMostPlaces, formatMessage},
});

}  // namespace

std::span<const ScalarFunction> byteFunctions() {
    return kByteFunctions;
}

}  // namespace kap::engine
