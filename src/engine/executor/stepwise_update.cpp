#include "engine/executor/deferred_rules.hpp"
#include "engine/executor/statement_runner.hpp"
#include "engine/plan/capture.hpp"
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
void StatementRunner::updateInSteps(const tsql::Statement& statement) {
    CompiledStatement steps;
    use(steps, translateUpdateInSteps(std::get<tsql::UpdateStatement>(statement.node),
                                      state_.frame().program.names()));
    DeferredRules rules(connection_.database());
    PreparedStatement first(connection_.handle(), steps.translation->sql.front());
    bind(steps, first);
    first.run();
    const Restored caught(state_.capturing);
    if (!state_.capturing.empty()) {
        state_.capturing.clear();
        PreparedStatement(connection_.handle(), steps.translation->sql[1]).run();
    }
    rules.checkAgain();
    PreparedStatement(connection_.handle(), steps.translation->sql.back()).run();
    if (hasBrokenReferences(connection_.handle())) {
        throw SqliteError(SQLITE_CONSTRAINT_FOREIGNKEY, "FOREIGN KEY constraint failed", 0);
    }
}

}  // namespace kap::engine
