#include "engine/binder/binder.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

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
    if (separator.constant() == nullptr &&
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
    std::vector<sql::Expression> keys;
    for (const tsql::OrderItem& item : call.within) {
        directions += item.descending ? 'd' : 'a';
        keys.push_back(value(*item.value, scope).tree);
    }
    sql::Call joined{fn::kStringAgg,
                     {convertTo(argument, wide, line).tree, convertTo(separator, wide, line).tree,
                      sql::text(directions), sql::number(unlimited ? 0 : kMostBytes),
                      sql::number(national ? 1 : 0)}};
    std::ranges::move(keys, std::back_inserter(joined.arguments));
    return BoundExpression::expression(std::move(joined), type, true);
}

}  // namespace kap::engine
