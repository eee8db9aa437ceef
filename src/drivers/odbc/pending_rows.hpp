#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/kept_statements.hpp"

namespace kap::ado::odbc {

// The rows of an open result that have not been read yet.
class PendingRows final : public RowSource, public Unread {
public:
    // Of a statement whose first block has been read. `timeout` is what reading may take before the
    // server sends anything; 0: no limit.
    PendingRows(std::shared_ptr<OdbcConnection> connection,
                std::shared_ptr<BoundStatement> statement, std::vector<ColumnInfo> columns,
                std::chrono::seconds timeout);
    ~PendingRows() override { release(); }
    PendingRows(const PendingRows&) = delete;
    PendingRows& operator=(const PendingRows&) = delete;

    void fetch(std::vector<ColumnStore>& rows) override;
    [[nodiscard]] bool fetchSome(std::vector<ColumnStore>& rows) override;
    void readAhead() override;
    void drop() override;
    // The statement is going on to its next result: what is left of this one is lost.
    void passOver() { release(); }

private:
    void readAll(std::vector<ColumnStore>& rows);
    void makeRoom(std::vector<ColumnStore>& rows);
    [[nodiscard]] Cancelling::Scope cancellable() const;
    void release();

    std::shared_ptr<OdbcConnection> connection_;
    std::shared_ptr<BoundStatement> statement_;  // unset: read to its end, or dropped
    std::vector<ColumnInfo> columns_;
    std::chrono::seconds timeout_;
    std::vector<ColumnStore> ahead_;
    std::optional<DriverError> failure_;
};

}  // namespace kap::ado::odbc
