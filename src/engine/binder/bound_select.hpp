#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/binder/binder.hpp"
#include "engine/sqlite/query_tree.hpp"

namespace kap::engine {

// A SELECT before its items are put into its tree: what follows may still convert or order them.
struct Binder::BoundSelect {
    struct OrderKey {
        std::optional<std::size_t> item;  // of the list
        BoundExpression value;            // where it is none of the list
        bool descending = false;
    };
    std::unique_ptr<Scope> scope;
    std::vector<OutputColumn> items;
    sql::Select tree;            // all of it but the items
    bool ties = false;           // TOP n WITH TIES
    bool ranked = false;         // the limit of `tree` is compared with the numbers of the rows
    std::vector<OrderKey> keys;  // what the order of `tree` holds, term by term
    bool ordersByOuter = false;  // by columns of a query around, which SQLite cannot
    bool grouped = false;
};

// The rows that number the grouping sets, to be joined with the rows that are grouped.
[[nodiscard]] sql::From groupingSetsSource(std::size_t count);

}  // namespace kap::engine
