#include "engine/executor/plan_handlers.hpp"
#include "engine/executor/statement_runner.hpp"
#include "engine/plan/translator.hpp"

// The rows of cursors.
namespace kap::engine {

void StatementRunner::openCursor(CompiledStatement& compiled, const tsql::Statement& query,
                                 ado::Result& result) {
    context_.connection.errorSlot().error.reset();
    const Transactions::ReadScope scope(context_.transactions);
    use(compiled, translateCursor(*std::get<tsql::SelectStatement>(query.node).query,
                                  context_.state.frame().program.names()));
    result = {};
    (void)fill(std::get<QueryPlan>(compiled.plan->kind), context_, compiled, result,
               SchemaCheck::NotNeeded);
}

}  // namespace kap::engine
