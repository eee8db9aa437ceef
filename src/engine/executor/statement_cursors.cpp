#include "engine/executor/statement_runner.hpp"
#include "engine/plan/translator.hpp"

// The rows of cursors.
namespace kap::engine {

void StatementRunner::openCursor(CompiledStatement& prepared, const tsql::Statement& query,
                                 ado::Result& result) {
    connection_.errorSlot().error.reset();
    const Transactions::ReadScope scope(transactions_);
    use(prepared, translateCursor(*std::get<tsql::SelectStatement>(query.node).query,
                                  state_.frame().program.names()));
    prepareAll(prepared);
    result = {};
    (void)fill(prepared, result, SchemaCheck::NotNeeded);
}

}  // namespace kap::engine
