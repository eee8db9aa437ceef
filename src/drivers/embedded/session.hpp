#pragma once

#include <vector>

#include "data/driver.hpp"
#include "drivers/embedded/row_changer.hpp"
#include "engine/catalog/counters.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/script/session_functions.hpp"
#include "engine/sqlite/file_connection.hpp"

namespace kap::ado::embedded {

// A connection to an embedded database.
class EmbeddedSession : public Session {
public:
    explicit EmbeddedSession(const engine::Options& options);

    using Session::execute;
    void execute(Request& request, Reply& reply) override;
    ChangeOutcome apply(const RowChange& change) override;
    [[nodiscard]] Result schema(SchemaEnum kind, const SchemaRestrictions& wanted) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    [[nodiscard]] int transactionDepth() const override { return transactions_.depth(); }

private:
    template <class Work>
    auto reported(Work work);

    engine::FileConnection connection_;
    engine::Counters counters_;
    engine::SchemaCatalogue catalogue_;
    engine::Transactions transactions_;
    engine::SessionState state_;
    engine::ScriptRunner scripts_;
    engine::SessionFunctions functions_;
    EmbeddedRowChanger changer_;
};

}  // namespace kap::ado::embedded
