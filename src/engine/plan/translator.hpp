#pragma once

#include "engine/binder/constants.hpp"
#include "engine/binder/name_scope.hpp"
#include "engine/plan/translation.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// Whether translate() makes SQL of a statement. The others are the script's own affair.
[[nodiscard]] bool isTranslated(const tsql::Statement& statement);

// Turns one statement of the dialect into SQLite's.
//
// `names` tells the tables and the variables. Throws tsql::ServerError with the server's number
// and text and the statement's line: 208 for an unknown table, 207 for an unknown column, 245 and
// 8115 for constants that do not fit...
[[nodiscard]] Translation translate(const tsql::Statement& statement, const NameScope& names,
                                    Constants constants = Constants::InText);

// An UPDATE that looks at keys only when all rows have their new values: the first text packs the
// new values into the rows (kap_pack), the second unpacks them in the rows that a capture holds,
// the last in the table.
[[nodiscard]] Translation translateUpdateInSteps(const tsql::UpdateStatement& statement,
                                                 const NameScope& names);

// The query of a cursor through which rows may be written; see Translation::rowTables.
[[nodiscard]] Translation translateCursor(const tsql::Query& query, const NameScope& names);

// The value of an expression, brought to a type: an Assign of one column.
[[nodiscard]] Translation translateValue(const tsql::Expression& expression,
                                         const tsql::TypeSpec& type, const NameScope& names);
// The value of an expression as it is.
[[nodiscard]] Translation translateValue(const tsql::Expression& expression,
                                         const NameScope& names);

// Whether a condition holds: an Assign of one column, 1 or 0.
[[nodiscard]] Translation translateCondition(const tsql::Expression& condition,
                                             const NameScope& names);

}  // namespace kap::engine
