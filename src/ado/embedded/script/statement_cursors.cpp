#include "ado/embedded/script/statement_runner.hpp"
#include "ado/embedded/translate/translator.hpp"

// The rows of cursors.
namespace kap::ado::embedded {

void StatementRunner::openCursor(Prepared& prepared, const tsql::Statement& query, Result& result) {
    connection_.errorSlot().error.reset();
    const Transactions::ReadScope scope(transactions_);
    use(prepared, translateCursor(*std::get<tsql::SelectStatement>(query.node).query,
                                  state_.frame().program.names()));
    prepareAll(prepared);
    result = {};
    (void)fill(prepared, result, SchemaCheck::NotNeeded);
}

}  // namespace kap::ado::embedded
