#include "base/restored.hpp"
#include "engine/executor/statement_runner.hpp"

// The numbers of sequences.
namespace kap::engine {

// A query that draws numbers of sequences writes their counters.
void StatementRunner::drawing(const std::function<void()>& read) {
    context_.requireHealthy();
    const Restored whole(context_.state.mayStand, false);
    context_.state.rankedNumbers.clear();
    Transactions::WriteScope scope(context_.transactions, Transactions::Writes::OneRow);
    read();
    scope.keep();
}

}  // namespace kap::engine
