#include "engine/sqlite/query_tree.hpp"

#include <memory>

#include "tsql/stack_limit.hpp"

namespace kap::engine::sql {

QueryTree::QueryTree(Query query) : query_(std::make_shared<const Query>(std::move(query))) {}

QueryTree::QueryTree(Select select) : QueryTree(Query{std::move(select)}) {}

bool operator==(const QueryTree& left, const QueryTree& right) {
    if (left.query_ == right.query_) return true;
    if (left.query_ == nullptr || right.query_ == nullptr) return false;
    tsql::requireStack(0);
    return *left.query_ == *right.query_;
}

bool operator==(const Joined& left, const Joined& right) {
    tsql::requireStack(0);
    return left.joinedBy == right.joinedBy && left.condition == right.condition &&
           left.source == right.source;
}

From from(FromSource source) {
    From result;
    result.push_back({std::move(source)});
    return result;
}

void join(From& left, JoinOperator joinedBy, From right, Expression condition) {
    if (right.size() == 1) {
        left.push_back({std::move(right.front().source), joinedBy, std::move(condition)});
    } else {
        left.push_back({std::move(right), joinedBy, std::move(condition)});
    }
}

Select allColumns(From from) {
    return one(Star(), std::move(from));
}

Select one(Expression value, From from) {
    Select result;
    result.items.push_back({std::move(value)});
    result.from = std::move(from);
    return result;
}

}  // namespace kap::engine::sql
