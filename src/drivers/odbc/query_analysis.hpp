#pragma once

#include <string_view>

#include "tsql/analysis/query_sources.hpp"

namespace kap::ado::odbc {

using tsql::QueryItem;
using tsql::QueryTable;

// What the text of a request says, as far as it can be read: drivers seldom tell it.
struct QueryAnalysis : tsql::QuerySources {
    bool changesTables = false;  // it may create, change or drop a table
    bool leavesState = true;     // it may leave something on the connection: a setting, a temporary
                                 // table, a cursor, a lock, a transaction
    bool onlyReads = false;      // nobody would miss what is not run of it
    bool mayFollow = false;      // a query may run in front of it, in one text with it, unnoticed
};

[[nodiscard]] QueryAnalysis analyse(std::string_view text);

}  // namespace kap::ado::odbc
