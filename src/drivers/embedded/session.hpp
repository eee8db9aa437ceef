#pragma once

#include <memory>

#include "data/dialects/sql_dialects.hpp"
#include "data/row_inserter.hpp"
#include "data/table_session.hpp"
#include "drivers/embedded/row_changer.hpp"
#include "engine/engine_session.hpp"

namespace kap::ado::embedded {

// A connection to an embedded database.
class EmbeddedSession : public TableSession, public InsertsRows {
public:
    explicit EmbeddedSession(const engine::Options& options);

    using Session::execute;
    void execute(Request& request, Reply& reply) override { engine_.execute(request, reply); }
    void cancel() noexcept override { engine_.cancel(); }
    ChangeOutcome apply(const RowChange& change) override;
    [[nodiscard]] std::unique_ptr<RowInserter> inserter(const RowPlan& insertion) override;
    [[nodiscard]] Result schema(SchemaEnum kind, const SchemaRestrictions& wanted) override;
    [[nodiscard]] Product product() override;
    [[nodiscard]] std::shared_ptr<void> precedence() override;
    [[nodiscard]] const SqlDialect& dialect() override { return embeddedSql(); }
    void begin() override { engine_.begin(); }
    void commit() override { engine_.commit(); }
    void rollback() override { engine_.rollback(); }
    [[nodiscard]] int transactionDepth() const override { return engine_.transactions().depth(); }

private:
    engine::EngineSession engine_;
    EmbeddedRowChanger changer_;
};

}  // namespace kap::ado::embedded
