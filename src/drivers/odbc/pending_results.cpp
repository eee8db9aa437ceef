#include "drivers/odbc/pending_results.hpp"

#include <iterator>
#include <utility>

#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {

PendingResults::PendingResults(std::shared_ptr<OdbcConnection> connection,
                               std::shared_ptr<BoundStatement> statement,
                               std::weak_ptr<PendingRows> rows, const ResultColumns& columns,
                               KnownQuery query, std::chrono::seconds timeout)
    : connection_(std::move(connection)),
      statement_(std::move(statement)),
      rows_(std::move(rows)),
      columns_(columns),
      query_(std::move(query)),
      timeout_(timeout) {}

// Results in front of a failure come before it is raised; those behind it come after.
std::optional<Result> PendingResults::next(std::vector<ServerMessage>& messages) {
    while (ahead_.empty()) {
        if (const auto failure = std::exchange(failure_, std::nullopt)) {
            throw *failure;
        }
        std::ranges::move(std::exchange(messages_, {}), std::back_inserter(messages));
        if (!goOn(messages)) {
            return std::nullopt;
        }
    }
    return takeAhead();
}

std::optional<Result> PendingResults::takeAhead() {
    Result result = std::move(ahead_.front());
    ahead_.pop_front();
    return result;
}

// One step of the statement; false when it has ended.
bool PendingResults::goOn(std::vector<ServerMessage>& messages) {
    if (!statement_) {
        return false;
    }
    const auto limited = connection_->limit(timeout_);
    ResultReader reader(connection_, columns_, timeout_);
    std::vector<Result> results;
    bool more = false;
    try {
        if (const auto rows = rows_.lock()) {
            rows->passOver();
        }
        const Cancelling::Scope cancellable(connection_->cancelling(), statement_->handle().get());
        more = reader.readNext(statement_, query_, results);
    } catch (const DriverError&) {
        release();
        throw;
    }
    rows_ = reader.rowsLeft();
    std::ranges::move(results, std::back_inserter(ahead_));
    if (!more) {
        release();
    }
    if (reader.failed()) {
        throw DriverError(std::move(reader.messages()), kErrorSource);
    }
    std::ranges::move(reader.messages(), std::back_inserter(messages));
    return more;
}

void PendingResults::readAhead() {
    if (const auto rows = rows_.lock()) {
        rows->readAhead();
    }
    if (!statement_) {
        return;
    }
    try {
        readRest();
    } catch (const DriverError& error) {
        failure_ = error;
    }
    release();
}

void PendingResults::readRest() {
    const auto limited = connection_->limit(timeout_);
    const Cancelling::Scope cancellable(connection_->cancelling(), statement_->handle().get());
    ResultReader reader(connection_, columns_, timeout_);
    std::vector<Result> results;
    reader.readRest(*statement_, query_, results);
    std::ranges::move(results, std::back_inserter(ahead_));
    if (reader.failed()) {
        throw DriverError(std::move(reader.messages()), kErrorSource);
    }
    messages_ = std::move(reader.messages());
}

void PendingResults::drop() {
    release();
}

void PendingResults::release() {
    if (!statement_) {
        return;
    }
    {
        const auto limited = connection_->endLimit();
        statement_.reset();
    }
    connection_.reset();
}

}  // namespace kap::ado::odbc
