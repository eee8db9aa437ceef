#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/kept_statements.hpp"

namespace kap::ado::odbc {

// The rows of an open result that have not been read yet.
class PendingRows final : public RowSource {
public:
    // Of a statement whose first block has been read. `timeout` is what reading may take before the
    // server sends anything; 0: no limit.
    PendingRows(std::shared_ptr<OdbcConnection> connection,
                std::unique_ptr<BoundStatement> statement, std::vector<ColumnInfo> columns,
                std::chrono::seconds timeout);
    ~PendingRows() override { release(); }
    PendingRows(const PendingRows&) = delete;
    PendingRows& operator=(const PendingRows&) = delete;

    void fetch(std::vector<ColumnStore>& rows) override;
    [[nodiscard]] bool fetchSome(std::vector<ColumnStore>& rows) override;
    // Reads everything that is left, to make way for another statement; a failure is raised by the
    // fetch that meets it.
    void readAhead();
    // Ends the reading: nothing can be fetched any more.
    void drop();

private:
    void readAll(std::vector<ColumnStore>& rows);
    void makeRoom(std::vector<ColumnStore>& rows);
    void release();

    std::shared_ptr<OdbcConnection> connection_;
    std::unique_ptr<BoundStatement> statement_;  // unset: read to its end, or dropped
    std::vector<ColumnInfo> columns_;
    std::chrono::seconds timeout_;
    std::vector<ColumnStore> ahead_;
    std::optional<DriverError> failure_;
};

}  // namespace kap::ado::odbc
