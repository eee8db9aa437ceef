#pragma once

#include <string>
#include <variant>
#include <vector>

#include "engine/sqlite/expression_tree.hpp"
#include "engine/sqlite/query_tree.hpp"

// Statements of SQLite that write rows, as trees: what the planner makes of INSERT, UPDATE, DELETE
// and MERGE and SqlWriter (sql_writer.hpp) writes.
namespace kap::engine::sql {

// What INSERT gives each column where it names none.
struct DefaultValues {};

struct Insert {
    TableName table;
    std::vector<std::string> columns = {};  // none: all of the table
    std::variant<Query, DefaultValues> rows = {};
    // The columns of unique indexes, as the schema has them, on whose duplicates rows are left out.
    std::vector<std::string> ignored = {};
};

struct Assignment {
    std::string column;
    Expression value;
};

struct Update {
    TableName table;
    std::vector<Assignment> assignments = {};
    From from = {};  // what stands beside the table; nothing: the table alone
    Expression where = {};
};

struct Delete {
    TableName table;
    Expression where = {};
};

struct Write {
    std::variant<Insert, Update, Delete> body;
    std::vector<CommonTable> with = {};
    std::vector<Expression> returning = {};  // of each row written; none: the statement has no rows
};

}  // namespace kap::engine::sql
