#pragma once

#include <cstdint>
#include <vector>

#include "data/driver.hpp"
#include "engine/executor/execution_context.hpp"
#include "engine/plan/statement_plan.hpp"

// How each kind of plan is run. StatementRunner has a plan visited with these: a kind that has none
// here does not compile.
namespace kap::engine {

// A statement that is running.
struct StatementRun {
    ExecutionContext& context;
    CompiledStatement& compiled;
    const StatementPlan& plan;  // stays as it is when triggers have the statement compiled anew
    const tsql::Statement& statement;
    std::vector<ado::Result>& results;
    Transactions::WriteScope* scope;  // null of a query that only reads
};

// run_query.cpp
void execute(const QueryPlan& plan, StatementRun& run);
// run_assignment.cpp
void execute(const AssignmentPlan& plan, StatementRun& run);
// run_write.cpp
void execute(const WritePlan& plan, StatementRun& run);
// statement_merge.cpp
void execute(const MergePlan& plan, StatementRun& run);
// statement_triggers.cpp
void execute(const InsteadPlan& plan, StatementRun& run);
// statement_definitions.cpp
void execute(const CreateTablePlan& plan, StatementRun& run);
void execute(const SelectIntoPlan& plan, StatementRun& run);
void execute(const CreateIndexPlan& plan, StatementRun& run);
void execute(const DropTablesPlan& plan, StatementRun& run);
void execute(const DropIndexesPlan& plan, StatementRun& run);
void execute(const TruncatePlan& plan, StatementRun& run);

// Whether a plan that reads is known to be of the present schema. If not, that it is of another
// one shows when SQLite has to prepare its text anew: then the answer is false, and no row has been
// taken.
enum class SchemaCheck : std::uint8_t { Needed, NotNeeded };
[[nodiscard]] bool fill(const QueryPlan& plan, ExecutionContext& context,
                        CompiledStatement& compiled, ado::Result& result, SchemaCheck check);
[[nodiscard]] bool assign(const AssignmentPlan& plan, ExecutionContext& context,
                          CompiledStatement& compiled, SchemaCheck check);

// What the handlers of writes share (run_write.cpp).
// Error 10700 for a table that the program was given.
void refuseReadOnly(const WriteTarget& target, const EngineContext& context);
// Error 16947 when WHERE CURRENT OF has found no row.
void requireRow(bool positioned, const EngineContext& context);
// Error 550 for a caught row that has left the view through which it was written.
void checkThroughView(const Capture& capture, const StatementRun& run);
// Answers the rows of OUTPUT, or puts them into its table.
void output(const Capture& capture, StatementRun& run);

// An UPDATE that shifts or exchanges the keys of rows (stepwise_update.cpp).
void updateInSteps(const tsql::UpdateStatement& statement, ExecutionContext& context);

}  // namespace kap::engine
