#pragma once

#include <array>
#include <string>
#include <vector>

#include "engine/binder/binder.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/plan/statement_plan.hpp"
#include "tsql/statements.hpp"

// Catching the rows that a statement writes, for triggers and for OUTPUT.
//
// SQLite's own triggers, kept in the connection's temporary schema, copy the rows before and after
// the change into two tables beside the written one: "kap row" numbers them, the same before and
// after an update, and "kap target" is the number of the row in its table. They work only while
// the session says so.
namespace kap::engine {

// What SQLite knows the tables and triggers by that catch the rows of a table.
struct CaptureNames {
    std::array<std::string, 3> triggers;
    std::array<std::string, 2> tables;
};
[[nodiscard]] CaptureNames captureNames(const Table& table);

// The statements that make the tables of caught rows alone.
[[nodiscard]] std::vector<std::string> makeCapturedRows(const Table& table);
// The statements that make those tables and triggers, and those that remove them.
[[nodiscard]] std::vector<std::string> makeCapture(const Table& table);
[[nodiscard]] std::vector<std::string> removeCapture(const Table& table);

// What a write of that event has to catch: for the table's triggers, for an OUTPUT clause, or
// nothing.
[[nodiscard]] std::optional<Capture> captureFor(const Table& table, tsql::TriggerEvents event,
                                                const std::optional<tsql::OutputClause>& output,
                                                Binder& binder);

// Who writes through a view knows the columns of inserted and deleted by the names that the view
// gives them.
void showThroughView(Source& source, const Table& table, const Binder& binder);

// Lets OUTPUT answer rows of the written table: `rows`, which has no columns yet, brings them, with
// what stands in `scope`.
// Answers the columns. Errors 334 for one whose triggers would fire, 330 to 333 for an INTO that
// cannot take them.
std::vector<OutputColumn> addOutput(Capture& capture, const tsql::OutputClause& output,
                                    const Table& table, Scope& scope, sql::Select rows,
                                    Binder& binder);

}  // namespace kap::engine
