#include "engine/executor/statement_runner.hpp"

// The numbers that statements are given: those of sequences, and identities.
namespace kap::engine {

// A query that draws numbers of sequences writes their counters.
void StatementRunner::drawing(const std::function<void()>& read) {
    requireHealthy();
    const Restored whole(state_.mayStand, false);
    state_.rankedNumbers.clear();
    Transactions::WriteScope scope(transactions_, Transactions::Writes::OneRow);
    read();
    scope.keep();
}

void StatementRunner::noteIdentity(StatementKind kind) {
    const auto identity = counters_.takeLastIdentity();
    if (kind != StatementKind::Insert) {
        return;
    }
    state_.identity = identity;
    state_.frame().scopeIdentity = identity;
}

}  // namespace kap::engine
