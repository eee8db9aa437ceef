#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "engine/sqlite/expression_tree.hpp"

// Queries of SQLite as trees: what the binder makes of queries and SqlWriter (sql_writer.hpp)
// writes. Those within expressions and in FROM are shared (QueryTree), all others are values.
namespace kap::engine::sql {

// Which of the databases of a connection a table stands in; none is named for a common table.
enum class Database : std::uint8_t { None, Main, Temporary };

// main."name" AS "alias"
struct TableName {
    Database database = Database::None;
    std::string name;
    std::string alias = {};

    friend bool operator==(const TableName&, const TableName&) = default;
};

// A query that is read from as from a table.
struct Derived {
    QueryTree query;
    std::string alias = {};

    friend bool operator==(const Derived&, const Derived&) = default;
};

// A function that gives rows.
struct RowsOf {
    Expression call;
    std::string alias = {};

    friend bool operator==(const RowsOf&, const RowsOf&) = default;
};

enum class JoinOperator : std::uint8_t { Inner, Left, Right, Full, Cross };

struct Joined;

// Sources that are joined from left to right; none: nothing is read.
using From = std::vector<Joined>;

// A source of FROM; sources that are joined before those around them stand in brackets.
using FromSource = std::variant<TableName, Derived, RowsOf, From>;

struct Joined {
    FromSource source;
    JoinOperator joinedBy = JoinOperator::Cross;  // to those before; of no use in the first
    Expression condition = {};                    // of ON; none: without

    friend bool operator==(const Joined&, const Joined&);
};

// FROM that reads one source.
[[nodiscard]] From from(FromSource source);

// Joins to what is there another part of FROM: several sources of it stand in brackets.
void join(From& left, JoinOperator joinedBy, From right, Expression condition = {});

// A value of a select list under a name between quotes; empty: without.
struct Item {
    Expression value;
    std::string name = {};

    friend bool operator==(const Item&, const Item&) = default;
};

struct Select {
    bool distinct = false;
    std::vector<Item> items = {};
    From from = {};
    Expression where = {};
    std::vector<Expression> groups = {};
    Expression having = {};
    std::vector<OrderTerm> order = {};
    Expression limit = {};
    Expression offset = {};  // only behind a limit

    friend bool operator==(const Select&, const Select&) = default;
};

enum class SetOperator : std::uint8_t { Union, UnionAll, Except, Intersect };

// Queries that are joined by operators, which SQLite follows from left to right.
struct Compound {
    struct Term {
        SetOperator joinedBy;  // to those before; of no use in the first
        Select select;

        friend bool operator==(const Term&, const Term&) = default;
    };
    std::vector<Term> terms = {};
    std::vector<OrderTerm> order = {};
    Expression limit = {};
    Expression offset = {};  // only behind a limit

    friend bool operator==(const Compound&, const Compound&) = default;
};

// Rows of expressions, whose columns SQLite calls column1, column2...
struct Values {
    std::vector<std::vector<Expression>> rows;

    friend bool operator==(const Values&, const Values&) = default;
};

// A table that a statement defines for itself.
struct CommonTable {
    std::string name;
    std::vector<std::string> columns;
    QueryTree query;

    friend bool operator==(const CommonTable&, const CommonTable&) = default;
};

struct Query {
    std::variant<Select, Compound, Values> body = Select();
    std::vector<CommonTable> with = {};

    friend bool operator==(const Query&, const Query&) = default;
};

// All columns of what is read.
[[nodiscard]] Select allColumns(From from);

// One expression over what is read.
[[nodiscard]] Select one(Expression value, From from);

}  // namespace kap::engine::sql
