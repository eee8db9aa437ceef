#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "engine/sqlite/expression_tree.hpp"

// Queries of SQLite as trees: what the binder makes of a SELECT and of those that UNION and its
// kin join, and what SqlWriter (sql_writer.hpp) writes.
//
// The sources of FROM and the queries within expressions are text.
namespace kap::engine::sql {

struct Query;

// What a SELECT reads: sources as text, or the rows of a query; neither where it reads nothing.
struct From {
    std::string text;
    std::shared_ptr<const Query> query;

    explicit operator bool() const { return query != nullptr || !text.empty(); }
};

// A value of a select list under a name between quotes; empty: without.
struct Item {
    Expression value;
    std::string name;
};

struct Select {
    bool distinct = false;
    std::vector<Item> items;
    From from;
    Expression where;
    std::vector<Expression> groups;
    Expression having;
    std::vector<OrderTerm> order;
    Expression limit;
    Expression offset;  // only behind a limit
};

enum class SetOperator : std::uint8_t { Union, UnionAll, Except, Intersect };

// Queries that are joined by operators, which SQLite follows from left to right.
struct Compound {
    struct Term {
        SetOperator joinedBy;  // to those before; of no use in the first
        Select select;
    };
    std::vector<Term> terms;
    std::vector<OrderTerm> order;
};

struct Query {
    std::variant<Select, Compound> kind;
};

// What reads all that a query gives.
[[nodiscard]] inline From fromQuery(std::variant<Select, Compound> query) {
    return {{}, std::make_shared<const Query>(Query{std::move(query)})};
}

}  // namespace kap::engine::sql
