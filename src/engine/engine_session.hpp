#pragma once

#include <chrono>
#include <vector>

#include "data/driver.hpp"
#include "engine/catalog/counters.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/executor/engine_context.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/script/session_functions.hpp"
#include "engine/sqlite/file_connection.hpp"
#include "engine/sqlite/server_errors.hpp"
#include "engine/sqlite/time_limit.hpp"
#include "platform/stack.hpp"

namespace kap::engine {

// Everything that one open database consists of.
class EngineSession {
public:
    explicit EngineSession(const Options& options);
    EngineSession(const EngineSession&) = delete;
    EngineSession& operator=(const EngineSession&) = delete;
    ~EngineSession() { scripts_.dropStanding(); }

    [[nodiscard]] FileConnection& connection() noexcept { return connection_; }
    [[nodiscard]] Counters& counters() noexcept { return counters_; }
    [[nodiscard]] SchemaCatalogue& catalogue() noexcept { return catalogue_; }
    [[nodiscard]] Transactions& transactions() noexcept { return transactions_; }
    [[nodiscard]] const Transactions& transactions() const noexcept { return transactions_; }
    [[nodiscard]] SessionState& state() noexcept { return state_; }
    [[nodiscard]] ScriptRunner& scripts() noexcept { return scripts_; }

    void execute(ado::Request& request, ado::Reply& reply);
    // Ends what execute() runs, reading its rows, or work that can be cancelled; from any thread.
    void cancel() noexcept { connection_.cancel(); }
    void begin();
    void commit();
    void rollback();

    // Every error of `work` leaves as a DriverError.
    template <class Work>
    auto reported(Work work) {
        platform::learnStack();
        // What a file could not give before says nothing of what is damaged now.
        takeReadFailure(connection_.handle());
        try {
            scripts_.makeWay();
            return work();
        } catch (const tsql::ServerError& error) {
            throw driverError(error);
        } catch (const SqliteError& error) {
            throw driverError(serverError(error, connection_.place()));
        }
    }

    // The same for work that cancel() ends, as long as it takes.
    template <class Work>
    auto cancellable(Work work) {
        return reported([&] {
            connection_.forgetCancel();
            const TimeLimit limit(connection_.handle(), std::chrono::seconds(0),
                                  &connection_.cancelled());
            try {
                return work();
            } catch (const SqliteError&) {
                raiseIfCancelled();
                throw;
            } catch (const tsql::ServerError&) {
                raiseIfCancelled();
                throw;
            }
        });
    }

private:
    void raiseIfCancelled() const {
        if (connection_.cancelled()) {
            throw ado::DriverError(std::vector{cancelMessage()});
        }
    }

    FileConnection connection_;
    Counters counters_;
    SchemaCatalogue catalogue_;
    Transactions transactions_;
    SessionState state_;
    EngineContext context_{connection_, catalogue_, counters_, transactions_, state_};
    ScriptRunner scripts_;
    SessionFunctions functions_;
};

}  // namespace kap::engine
