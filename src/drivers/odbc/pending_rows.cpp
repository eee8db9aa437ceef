#include "drivers/odbc/pending_rows.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "data/cell_value.hpp"
#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {
namespace {

void appendRow(const ColumnInfo& column, const ColumnStore& from, std::size_t row,
               ColumnStore& to) {
    append(to, databaseValue(column, from, row));
}

}  // namespace

PendingRows::PendingRows(std::shared_ptr<OdbcConnection> connection,
                         std::shared_ptr<BoundStatement> statement, std::vector<ColumnInfo> columns,
                         std::chrono::seconds timeout)
    : connection_(std::move(connection)),
      statement_(std::move(statement)),
      columns_(std::move(columns)),
      timeout_(timeout) {}

void PendingRows::fetch(std::vector<ColumnStore>& rows) {
    for (std::size_t column = 0; column < ahead_.size(); ++column) {
        for (std::size_t row = 0; row < ahead_[column].size(); ++row) {
            appendRow(columns_[column], ahead_[column], row, rows[column]);
        }
    }
    ahead_.clear();
    if (failure_) {
        throw *failure_;
    }
    readAll(rows);
}

bool PendingRows::fetchSome(std::vector<ColumnStore>& rows) {
    if (!ahead_.empty() || failure_ || !statement_) {
        fetch(rows);
        return false;
    }
    try {
        const auto limited = connection_->limit(timeout_);
        const auto cancellable = this->cancellable();
        if (statement_->reader().readBlock(columns_, rows) && !statement_->isRead()) {
            return true;
        }
    } catch (const DriverError& error) {
        failure_ = error;
        throw;
    }
    release();
    return false;
}

void PendingRows::readAhead() {
    if (statement_ && !failure_) {
        ahead_.resize(columns_.size());
        try {
            readAll(ahead_);
        } catch (const DriverError&) {
            return;  // it has been kept for whoever fetches
        }
    }
}

void PendingRows::drop() {
    release();
    failure_ = driverError(errors::kObjectClosed, "08003",
                           "The connection was closed before all rows had been fetched.");
}

void PendingRows::readAll(std::vector<ColumnStore>& rows) {
    if (!statement_) {
        return;
    }
    try {
        const auto limited = connection_->limit(timeout_);
        const auto cancellable = this->cancellable();
        makeRoom(rows);
        while (statement_->reader().readBlock(columns_, rows)) {
        }
    } catch (const DriverError& error) {
        failure_ = error;
        throw;
    }
    release();
}

// Some drivers know how many rows there are: the stores need not grow then.
void PendingRows::makeRoom(std::vector<ColumnStore>& rows) {
    constexpr SQLLEN kMostBelieved = 10'000'000;
    SQLLEN count = -1;
    if (SQL_SUCCEEDED(SQLRowCount(statement_->handle().get(), &count)) && count > 0) {
        for (ColumnStore& store : rows) {
            store.reserve(static_cast<std::size_t>(std::min(count, kMostBelieved)));
        }
    }
}

Cancelling::Scope PendingRows::cancellable() const {
    return {connection_->cancelling(), statement_->handle().get()};
}

// The connection ends when nobody needs it any more.
void PendingRows::release() {
    if (!connection_) {
        return;
    }
    {
        const auto limited = connection_->endLimit();
        statement_.reset();
    }
    connection_.reset();
}

}  // namespace kap::ado::odbc
