#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/block_reader.hpp"

namespace kap::ado::odbc {

// The rows of an open result that have not been read yet.
class PendingRows final : public RowSource {
public:
    // `timeout` is what reading may take before the server sends anything; 0: no limit.
    PendingRows(std::shared_ptr<OdbcConnection> connection, Handle statement,
                std::vector<ColumnInfo> columns, std::chrono::seconds timeout);
    ~PendingRows() override { release(); }
    PendingRows(const PendingRows&) = delete;
    PendingRows& operator=(const PendingRows&) = delete;

    // Appends the next block; false when there was none.
    [[nodiscard]] bool readBlock(std::vector<ColumnInfo>& columns, std::vector<ColumnStore>& rows);
    [[nodiscard]] bool atEnd() const noexcept { return reader_->atEnd(); }
    [[nodiscard]] const Handle& statement() const noexcept { return statement_; }

    void fetch(std::vector<ColumnStore>& rows) override;
    [[nodiscard]] bool fetchSome(std::vector<ColumnStore>& rows) override;
    // Reads everything that is left, to make way for another statement; a failure is raised by the
    // fetch that meets it.
    void readAhead();
    // Ends the reading: nothing can be fetched any more.
    void drop();

private:
    void readAll(std::vector<ColumnStore>& rows);
    void release();

    std::shared_ptr<OdbcConnection> connection_;
    Handle statement_;
    std::vector<ColumnInfo> columns_;
    std::chrono::seconds timeout_;
    std::optional<BlockReader> reader_;  // unset: read, failed or dropped
    std::vector<ColumnStore> ahead_;
    std::optional<DriverError> failure_;
};

}  // namespace kap::ado::odbc
