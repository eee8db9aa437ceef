#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kap::ado::odbc {

// A table that a query reads.
struct QueryTable {
    std::string catalog;  // empty: not given
    std::string schema;   // likewise
    std::string name;
    std::string alias;  // what columns are qualified by
};

// A column of a query's result, as it is written.
struct QueryItem {
    enum class Kind { Star, Column, Expression };
    Kind kind = Kind::Expression;
    std::string qualifier;  // empty: none
    std::string column;
};

// What the text of a request says, as far as it can be read: drivers seldom tell it.
struct QueryAnalysis {
    bool isOneQuery = false;     // nothing but one query: there is no result behind the first
    bool isReadable = false;     // `tables` and `items` say where every column comes from
    bool isCombined = false;     // its rows are not rows of a table: grouped, distinct, a union
    bool changesTables = false;  // it may create, change or drop a table
    bool leavesState = true;     // it may leave something on the connection: a setting, a temporary
                                 // table, a cursor, a lock, a transaction
    bool mayFollow = false;      // a query may run in front of it, in one text with it, unnoticed
    std::vector<QueryTable> tables;
    std::vector<QueryItem> items;
};

[[nodiscard]] QueryAnalysis analyse(std::string_view text);

}  // namespace kap::ado::odbc
