#include "drivers/embedded/session.hpp"

#include <filesystem>

#include "drivers/embedded/schema_rowsets.hpp"
#include "platform/stack.hpp"

namespace kap::ado::embedded {
namespace {

// Scripts know the database by its file's name.
std::string databaseNameOf(const engine::Options& options) {
    return options.inMemory() ? "memory" : std::filesystem::path(options.source).stem().string();
}

}  // namespace

EmbeddedSession::EmbeddedSession(const engine::Options& options)
    : connection_(options),
      counters_(connection_.database(), connection_.errorSlot()),
      catalogue_(connection_.database(), counters_),
      transactions_(connection_, counters_, catalogue_),
      scripts_(connection_, catalogue_, counters_, transactions_, state_),
      functions_(connection_, catalogue_, counters_, transactions_, state_, scripts_),
      changer_(connection_, catalogue_, transactions_, scripts_) {
    catalogue_.setDatabaseName(databaseNameOf(options));
}

// Every error leaves a session as a DriverError.
template <class Work>
auto EmbeddedSession::reported(Work work) {
    platform::learnStack();
    try {
        return work();
    } catch (const tsql::ServerError& error) {
        throw engine::driverError(error);
    } catch (const engine::SqliteError& error) {
        throw engine::driverError(engine::serverError(error, connection_.place()));
    }
}

void EmbeddedSession::execute(Request& request, Reply& reply) {
    reported([&] { scripts_.run(request, reply); });
}

ChangeOutcome EmbeddedSession::apply(const RowChange& change) {
    return reported([&] {
        ChangeOutcome outcome = changer_.apply(change);
        if (change.kind == RowChange::Kind::Insert) {
            state_.identity = counters_.takeLastIdentity();
        }
        return outcome;
    });
}

Result EmbeddedSession::schema(SchemaEnum kind, const SchemaRestrictions& wanted) {
    return reported([&] {
        const engine::Transactions::ReadScope scope(transactions_);
        return schemaRowset(catalogue_, kind, wanted);
    });
}

void EmbeddedSession::begin() {
    reported([&] { transactions_.begin(); });
}

void EmbeddedSession::commit() {
    reported([&] { transactions_.commit(); });
}

void EmbeddedSession::rollback() {
    reported([&] {
        if (!transactions_.takeLost()) {
            transactions_.rollback();
        }
    });
}

}  // namespace kap::ado::embedded
