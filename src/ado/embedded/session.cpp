#include "ado/embedded/session.hpp"

namespace kap::ado::embedded {

EmbeddedSession::EmbeddedSession(const Options& options)
    : connection_(options),
      counters_(connection_.database(), connection_.errorSlot()),
      catalogue_(connection_.database(), counters_),
      transactions_(connection_.database(), counters_, catalogue_),
      scripts_(connection_, catalogue_, counters_, transactions_),
      changer_(connection_, catalogue_, transactions_) {}

// Every error leaves a session as a DriverError.
template <class Work>
auto EmbeddedSession::reported(Work work) {
    try {
        return work();
    } catch (const tsql::ServerError& error) {
        throw driverError(error);
    } catch (const SqliteError& error) {
        throw driverError(serverError(error, connection_.place()));
    }
}

void EmbeddedSession::execute(Request& request, Reply& reply) {
    reported([&] { scripts_.run(request.text, reply.results); });
}

ChangeOutcome EmbeddedSession::apply(const RowChange& change) {
    return reported([&] { return changer_.apply(change); });
}

void EmbeddedSession::begin() {
    reported([&] { transactions_.begin(); });
}

void EmbeddedSession::commit() {
    reported([&] { transactions_.commit(); });
}

void EmbeddedSession::rollback() {
    reported([&] { transactions_.rollback(); });
}

}  // namespace kap::ado::embedded
