#pragma once

#include <string_view>

#include "tsql/server_error.hpp"
#include "tsql/statements.hpp"

// Which functions are aggregates, and where they stand.
namespace kap::engine {

// True when an aggregate function stands in the expression, outside subqueries.
[[nodiscard]] bool containsAggregate(const tsql::Expression& expression);

// True for COUNT, SUM, AVG, MIN, MAX and COUNT_BIG.
[[nodiscard]] bool isAggregateName(const tsql::ObjectName& name);
// STDEV, STDEVP, VAR and VARP, in small letters.
[[nodiscard]] bool isStatisticsName(std::string_view name);
[[nodiscard]] tsql::ServerError aggregateOfAggregate(int line);
// A function that numbers or compares the rows of a window has no meaning without OVER.
void refuseWithoutWindow(const tsql::FunctionCall& call, int line);

}  // namespace kap::engine
