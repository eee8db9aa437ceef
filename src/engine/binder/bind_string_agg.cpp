#include "engine/binder/binder.hpp"

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;
using tsql::TypeSpec;

// STRING_AGG(value, separator) WITHIN GROUP (ORDER BY keys).
BoundExpression Binder::joinedTexts(const tsql::FunctionCall& call, int line, Scope& scope) {
    if (call.star || call.distinct || call.arguments.size() != 2) {
        throw ServerError(tsql::Message::WrongArgumentCount, {"string_agg", "2"}, line);
    }
    const Restored inside(scope.insideAggregate, true);
    const BoundExpression argument = value(*call.arguments[0], scope);
    const BoundExpression separator = value(*call.arguments[1], scope);
    if (!separator.constant &&
        !std::holds_alternative<tsql::VariableReference>(call.arguments[1]->node)) {
        throw ServerError(tsql::Message::SeparatorNotLiteral, {}, line);
    }
    const SqlType given = argument.type.type;
    const bool text = tsql::isText(given);
    const bool national = !text || tsql::isNational(given);
    const bool unlimited = text && argument.type.length == tsql::kMaxLength;
    constexpr int kMostBytes = 8000;
    const TypeSpec type{national ? SqlType::NVarChar : SqlType::VarChar, unlimited
                                                                             ? tsql::kMaxLength
                                                                         : national ? kMostBytes / 2
                                                                                    : kMostBytes};
    const TypeSpec wide{type.type, tsql::kMaxLength};
    std::string directions;
    std::string keys;
    for (const tsql::OrderItem& item : call.within) {
        directions += item.descending ? 'd' : 'a';
        keys += ", " + value(*item.value, scope).sql;
    }
    const std::string most = unlimited ? "0" : plain::text(kMostBytes);
    return BoundExpression::expression(
        callText("kap_string_agg", convertTo(argument, wide, line).sql,
                 convertTo(separator, wide, line).sql, sqlText(directions), most,
                 (national ? "1" : "0") + keys),
        type, true);
}

}  // namespace kap::engine
