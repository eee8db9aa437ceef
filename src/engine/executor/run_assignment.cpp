#include <cstddef>

#include "engine/executor/plan_handlers.hpp"

namespace kap::engine {

// Each row leaves its values in the variables, so the last one's stay.
bool assign(const AssignmentPlan& plan, ExecutionContext& context, CompiledStatement& compiled,
            SchemaCheck check) {
    PreparedStatement& rows = context.prepared(compiled.prepared, plan.sql);
    context.bind(compiled.plan->values.variables, compiled.constants, rows);
    const ResetGuard guard(rows);
    bool more = rows.step();
    if (rows.preparedAnew() && check == SchemaCheck::Needed) {
        return false;
    }
    const std::int64_t most = context.state.writes.rowLimit;
    std::int64_t count = 0;
    while (more) {
        int column = 0;
        for (const AssignmentPlan::Target& target : plan.targets) {
            context.state.frame().values[static_cast<std::size_t>(target.slot)] =
                valueOf(rows, column++, target.type);
        }
        ++count;
        more = (most == 0 || count < most) && rows.step();
    }
    context.state.rowCount = count;
    return true;
}

void execute(const AssignmentPlan& plan, StatementRun& run) {
    (void)assign(plan, run.context, run.compiled, SchemaCheck::NotNeeded);
}

}  // namespace kap::engine
