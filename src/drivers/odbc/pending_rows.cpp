#include "drivers/odbc/pending_rows.hpp"

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

PendingRows::PendingRows(std::shared_ptr<OdbcConnection> connection, Handle statement,
                         std::vector<ColumnInfo> columns, std::chrono::seconds timeout)
    : connection_(std::move(connection)),
      statement_(std::move(statement)),
      columns_(std::move(columns)),
      timeout_(timeout) {
    reader_.emplace(*connection_, statement_, columns_);
}

bool PendingRows::readBlock(std::vector<ColumnInfo>& columns, std::vector<ColumnStore>& rows) {
    return reader_->readBlock(columns, rows);
}

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
    if (!ahead_.empty() || failure_ || !reader_) {
        fetch(rows);
        return false;
    }
    try {
        const auto limited = connection_->limit(timeout_);
        if (reader_->readBlock(columns_, rows) && !reader_->atEnd()) {
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
    if (reader_ && !failure_) {
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
    if (!reader_) {
        return;
    }
    try {
        const auto limited = connection_->limit(timeout_);
        while (reader_->readBlock(columns_, rows)) {
        }
    } catch (const DriverError& error) {
        failure_ = error;
        throw;
    }
    release();
}

// The connection ends when nobody needs it any more.
void PendingRows::release() {
    if (!connection_) {
        return;
    }
    {
        const auto limited = connection_->endLimit();
        reader_.reset();
        statement_ = Handle();
    }
    connection_.reset();
}

}  // namespace kap::ado::odbc
