#pragma once

#include <memory>

namespace kap::engine::sql {

struct Query;
struct Select;

// A query within an expression or in FROM, or none. Like an expression it never changes, so that
// those who hold it share it.
class QueryTree {
public:
    QueryTree() = default;
    QueryTree(Query query);    // NOLINT(google-explicit-constructor): it is one
    QueryTree(Select select);  // NOLINT(google-explicit-constructor): likewise

    explicit operator bool() const { return query_ != nullptr; }
    // The query; there must be one.
    [[nodiscard]] const Query& operator*() const { return *query_; }

    // Whether two queries are written alike. Error 8631 where the stack ends.
    friend bool operator==(const QueryTree& left, const QueryTree& right);

private:
    std::shared_ptr<const Query> query_;
};

}  // namespace kap::engine::sql
