#pragma once

#include "engine/binder/constants.hpp"
#include "engine/binder/name_scope.hpp"
#include "engine/plan/statement_plan.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// Whether translate() makes a plan of a statement. The others are the script's own affair.
[[nodiscard]] bool isTranslated(const tsql::Statement& statement);

// The table that SELECT ... INTO makes; null of any other query.
[[nodiscard]] const tsql::ObjectName* tableMadeBy(const tsql::SelectStatement& statement);
// Whether it is a query that makes no table.
[[nodiscard]] bool isPlainQuery(const tsql::Statement& statement);

// Turns one statement of the dialect into what SQLite is to run for it.
//
// `names` tells the tables and the variables. Throws tsql::ServerError with the server's number
// and text and the statement's line: 208 for an unknown table, 207 for an unknown column, 245 and
// 8115 for constants that do not fit...
[[nodiscard]] StatementPlan translate(const tsql::Statement& statement, const NameScope& names,
                                      Constants constants = Constants::InText);

// An UPDATE that looks at keys only when all rows have their new values.
[[nodiscard]] SteppedUpdatePlan translateUpdateInSteps(const tsql::UpdateStatement& statement,
                                                       const NameScope& names);

// The query of a cursor through which rows may be written; see QueryPlan::rowTables.
[[nodiscard]] StatementPlan translateCursor(const tsql::Query& query, const NameScope& names);

// The value of an expression, brought to a type.
[[nodiscard]] ValuePlan translateValue(const tsql::Expression& expression,
                                       const tsql::TypeSpec& type, const NameScope& names);
// The value of an expression as it is.
[[nodiscard]] ValuePlan translateValue(const tsql::Expression& expression, const NameScope& names);

// Whether a condition holds: 1 or 0.
[[nodiscard]] ValuePlan translateCondition(const tsql::Expression& condition,
                                           const NameScope& names);

}  // namespace kap::engine
