#pragma once

#include <string_view>
#include <vector>

#include "ado/driver.hpp"
#include "ado/embedded/connection.hpp"
#include "ado/embedded/counters.hpp"
#include "ado/embedded/row_changer.hpp"
#include "ado/embedded/schema_catalogue.hpp"
#include "ado/embedded/script_runner.hpp"
#include "ado/embedded/transactions.hpp"

namespace kap::ado::embedded {

// A connection to an embedded database.
class EmbeddedSession : public Session {
public:
    explicit EmbeddedSession(const Options& options);

    using Session::execute;
    void execute(Request& request, Reply& reply) override;
    ChangeOutcome apply(const RowChange& change) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    [[nodiscard]] int transactionDepth() const override { return transactions_.depth(); }

private:
    template <class Work>
    auto reported(Work work);

    Connection connection_;
    Counters counters_;
    SchemaCatalogue catalogue_;
    Transactions transactions_;
    ScriptRunner scripts_;
    RowChanger changer_;
};

}  // namespace kap::ado::embedded
