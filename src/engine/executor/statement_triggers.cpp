#include "engine/executor/plan_handlers.hpp"
#include "engine/plan/capture.hpp"
#include "engine/sqlite/time_limit.hpp"

// A statement that a trigger fires instead of: its rows are put where the trigger looks for them,
// and nothing is written.
namespace kap::engine {

namespace {

// What the statement needs beside the caught rows, for as long as it runs.
class HelpingTables {
public:
    HelpingTables(sqlite3* database, const InsteadPlan& plan) : database_(database), plan_(plan) {
        for (const std::string& sql : plan.make)
            PreparedStatement(database, sql).run();
    }
    HelpingTables(const HelpingTables&) = delete;
    HelpingTables& operator=(const HelpingTables&) = delete;
    ~HelpingTables() {
        const TimeLimit::Pause whole;
        for (const std::string& sql : plan_.remove)
            sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr);
    }

private:
    sqlite3* database_;
    const InsteadPlan& plan_;
};

}  // namespace

void execute(const InsteadPlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    sqlite3* database = context.connection.handle();
    refuseReadOnly(plan.target, context);
    run.scope->expectSeveral();
    context.captures.ensureRows(plan.shape);
    std::int64_t count = 0;
    {
        const HelpingTables tables(database, plan);
        for (const std::string& sql : plan.fill) {
            context.runText(run.plan.values, sql);
            count = context.connection.database().changes();
        }
    }
    (void)context.counters.takeLastIdentity();
    context.state.rowCount = count;
    context.fire(plan.shape, {plan.shape.name, plan.target.insteadOfEvent, plan.columns, true},
                 run.results);
    for (const std::string& rows : captureNames(plan.shape).tables)
        PreparedStatement(database, "DELETE FROM temp." + sqlName(rows)).run();
    context.state.rowCount = count;
    context.addCount(run.results);
}

}  // namespace kap::engine
