#include "drivers/embedded/session.hpp"

#include "drivers/embedded/row_inserter.hpp"
#include "drivers/embedded/schema_rowsets.hpp"

namespace kap::ado::embedded {

EmbeddedSession::EmbeddedSession(const engine::Options& options)
    : engine_(options),
      changer_(engine_.connection(), engine_.catalogue(), engine_.transactions(),
               engine_.scripts()) {}

ChangeOutcome EmbeddedSession::apply(const RowChange& change) {
    return engine_.cancellable([&] {
        ChangeOutcome outcome = changer_.apply(change);
        if (change.plan->kind() == RowPlan::Kind::Insert) {
            engine_.state().identity = engine_.counters().takeLastIdentity();
        }
        return outcome;
    });
}

std::unique_ptr<RowInserter> EmbeddedSession::inserter(const RowPlan& insertion) {
    return engine_.reported([&]() -> std::unique_ptr<RowInserter> {
        const engine::Table& table = changer_.tableOf(insertion);
        if (!EmbeddedRowInserter::serves(engine_, table)) {
            return nullptr;  // its triggers run row by row
        }
        return std::make_unique<EmbeddedRowInserter>(engine_, table, insertion);
    });
}

Result EmbeddedSession::schema(SchemaEnum kind, const SchemaRestrictions& wanted) {
    return engine_.reported([&] {
        const engine::Transactions::ReadScope scope(engine_.transactions());
        return schemaRowset(engine_.catalogue(), kind, wanted);
    });
}

// The version is that of the file's format and of what reads it.
Product EmbeddedSession::product() {
    return {"KapLocal", engine::sqliteVersion(), engine_.catalogue().databaseName(), {}};
}

std::shared_ptr<void> EmbeddedSession::precedence() {
    if (engine_.connection().database().inTransaction()) {
        return nullptr;  // it has the lock that those in front wait for
    }
    return std::make_shared<engine::LockWait::Precedence>(engine_.connection().lockWait());
}

}  // namespace kap::ado::embedded
