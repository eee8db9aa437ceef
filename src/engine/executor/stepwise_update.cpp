#include "engine/executor/deferred_rules.hpp"
#include "engine/executor/plan_handlers.hpp"
#include "engine/plan/translator.hpp"

// Updates that shift or exchange the keys of rows.
namespace kap::engine {

namespace {

bool hasBrokenReferences(sqlite3* database) {
    int broken = 0;
    int highest = 0;
    sqlite3_db_status(database, SQLITE_DBSTATUS_DEFERRED_FKS, &broken, &highest, 0);
    return broken != 0;
}

}  // namespace

// The server looks at keys when a statement is done, SQLite at each row: SET Riga = Riga + 1 would
// end at the first row whose neighbour has not moved yet. So the rows first get stand-ins that
// differ from everything, and then the values that these hold.
void updateInSteps(const tsql::UpdateStatement& statement, ExecutionContext& context) {
    SessionState& state = context.state;
    const SteppedUpdatePlan plan = translateUpdateInSteps(statement, state.frame().program.names());
    sqlite3* database = context.connection.handle();
    DeferredRules rules(context.connection.database());
    context.runText(plan.values, plan.pack);
    const Restored caught(state.capturing);
    if (!state.capturing.empty()) {
        state.capturing.clear();
        PreparedStatement(database, plan.unpackCaught).run();
    }
    rules.checkAgain();
    PreparedStatement(database, plan.unpack).run();
    if (hasBrokenReferences(database)) {
        throw SqliteError(SQLITE_CONSTRAINT_FOREIGNKEY, "FOREIGN KEY constraint failed", 0);
    }
}

}  // namespace kap::engine
