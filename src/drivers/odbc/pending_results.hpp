#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/kept_statements.hpp"
#include "drivers/odbc/result_reader.hpp"

namespace kap::ado::odbc {

// The results of a text of several statements behind the one whose rows its client is reading.
class PendingResults final : public ResultSource, public Unread {
public:
    // `rows`: what has been left of that one's. `columns` are good until the reading is dropped.
    PendingResults(std::shared_ptr<OdbcConnection> connection,
                   std::shared_ptr<BoundStatement> statement, std::weak_ptr<PendingRows> rows,
                   const ResultColumns& columns, KnownQuery query, std::chrono::seconds timeout);
    ~PendingResults() override { release(); }
    PendingResults(const PendingResults&) = delete;
    PendingResults& operator=(const PendingResults&) = delete;

    [[nodiscard]] std::optional<Result> next(std::vector<ServerMessage>& messages) override;
    void readAhead() override;
    void drop() override;

private:
    [[nodiscard]] std::optional<Result> takeAhead();
    [[nodiscard]] bool goOn(std::vector<ServerMessage>& messages);
    void readRest();
    void release();

    std::shared_ptr<OdbcConnection> connection_;
    std::shared_ptr<BoundStatement> statement_;  // unset: it has ended, or been dropped
    std::weak_ptr<PendingRows> rows_;
    ResultColumns columns_;
    KnownQuery query_;
    std::chrono::seconds timeout_;
    std::deque<Result> ahead_;
    std::vector<ServerMessage> messages_;  // of what has been read ahead
    std::optional<DriverError> failure_;
};

}  // namespace kap::ado::odbc
