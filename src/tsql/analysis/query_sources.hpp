#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kap::tsql {

// A table that a query reads.
struct QueryTable {
    std::string written;  // as the query names it: "dbo.Clienti"
    std::string catalog;  // empty: not given
    std::string schema;   // likewise
    std::string name;
    std::string alias;  // what columns are qualified by
};

// A column of a query's result, as it is written.
struct QueryItem {
    enum class Kind : std::uint8_t { Star, Column, Expression };
    Kind kind = Kind::Expression;
    std::string qualifier;  // empty: none
    std::string column;
};

// Which tables a query reads, and what of them is in its result: all that can be told without a
// catalogue.
struct QuerySources {
    bool isOneQuery = false;  // the script is nothing but one query, which makes no table
    bool isReadable = false;  // `tables` and `items` say where every column comes from
    bool isCombined = false;  // its rows are not rows of a table: grouped, distinct, a union
    std::vector<QueryTable> tables;
    std::vector<QueryItem> items;
};

// Raises ServerError when the script is not of the dialect. Deep scripts need the stack to be known
// (see base/stack.hpp).
[[nodiscard]] QuerySources sourcesOf(std::string_view script);

}  // namespace kap::tsql
