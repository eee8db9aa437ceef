#include <algorithm>
#include <utility>

#include "engine/binder/binder.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/sequences.hpp"
#include "tsql/server_error.hpp"

// NEXT VALUE FOR. Numbers of one sequence within one row are the same, so only the first of them is
// drawn. With OVER it is the one at the place that the row has in this order.
namespace kap::engine {

using tsql::ServerError;

BoundExpression Binder::nextValue(const tsql::FunctionCall& call, int line, Scope& scope) {
    const tsql::ObjectName& name =
        std::get<tsql::ColumnReference>(call.arguments.front()->node).name;
    const std::string stored = followedName(name, schema_, catalogue());
    const Sequence* sequence = catalogue().findSequence(stored);
    if (sequence == nullptr) {
        const bool other = !stored.empty() && catalogue().knows(stored);
        throw ServerError(other ? tsql::Message::NoSequence : tsql::Message::InvalidObject,
                          {name.text()}, line);
    }
    if (names_.settings().rowLimit > 0) throw ServerError(tsql::Message::DrawWithTop, {}, line);
    drawsNumbers_ = true;
    const sql::Expression own = sql::text(sequence->name);
    sql::Expression drawn;
    if (call.over) {
        const Restored inside(scope.insideWindow, true);
        ++windowsBound_;
        const sql::Expression place =
            sql::Over{sql::call(fn::kRowNumber), windowOf(*call.over, line, scope)};
        drawn = sql::call(fn::kRankedValue, own, place);
    } else {
        const bool again =
            std::ranges::find(scope.drawnFrom, sequence->name) != scope.drawnFrom.end();
        if (!again) scope.drawnFrom.push_back(sequence->name);
        drawn = sql::call(again ? fn::kSameValue : fn::kNextValue, own);
    }
    if (tsql::isWideDecimal(sequence->type)) drawn = sql::call(fn::kWide, std::move(drawn), 0);
    return BoundExpression::expression(drawn, sequence->type, false);
}

}  // namespace kap::engine
