#include "drivers/odbc/block_reader.hpp"

#include <algorithm>

#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {
namespace {

// Most results are small: the first block is, too.
constexpr std::size_t kFirstBlockBytes = 16 * 1024;
constexpr std::size_t kBlockBytes = 512 * 1024;
constexpr std::size_t kMostRows = 4096;

std::size_t rowsIn(std::size_t bytes, std::size_t rowBytes) {
    return std::clamp<std::size_t>(bytes / std::max<std::size_t>(rowBytes, 1), 2, kMostRows);
}

SQLUSMALLINT numberOfColumn(std::size_t column) {
    return static_cast<SQLUSMALLINT>(column + 1);
}

}  // namespace

BlockReader::BlockReader(OdbcConnection& connection, const Handle& statement,
                         const std::vector<ColumnInfo>& columns)
    : connection_(connection), statement_(statement) {
    std::size_t rowBytes = 0;
    for (const ColumnInfo& column : columns) {
        cells_.emplace_back(column);
        rowBytes += cells_.back().rowBytes();
    }
    bound_ = boundOf(columns);
    const bool rowByRow = bound_ < columns.size();
    fullRows_ = rowByRow ? 1 : rowsIn(kBlockBytes, rowBytes);
    firstRows_ = rowByRow ? 1 : rowsIn(kFirstBlockBytes, rowBytes);
    bind(firstRows_);
}

std::size_t BlockReader::boundOf(const std::vector<ColumnInfo>& columns) const {
    if (connection_.dialect().driver().cellPieces) {
        return columns.size();
    }
    const auto endless = std::ranges::find_if(columns, &ColumnInfo::isLong);
    return static_cast<std::size_t>(std::distance(columns.begin(), endless));
}

bool BlockReader::fits(const std::vector<ColumnInfo>& columns) const {
    return blockRows_ == firstRows_ && bound_ == boundOf(columns) &&
           std::ranges::equal(
               cells_, columns,
               [](const CellBuffer& cell, const ColumnInfo& column) { return cell.fits(column); });
}

void BlockReader::restart() noexcept {
    fetched_ = 0;
    atEnd_ = false;
}

// The statement outlives the buffers that it knows.
BlockReader::~BlockReader() {
    SQLFreeStmt(statement_.get(), SQL_UNBIND);
    SQLSetStmtAttrW(statement_.get(), SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttrW(statement_.get(), SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
}

void BlockReader::bind(std::size_t rows) {
    SQLHSTMT statement = statement_.get();
    blockRows_ = rows;
    states_.resize(rows);
    connection_.check(SQLSetStmtAttrW(statement, SQL_ATTR_ROW_ARRAY_SIZE, asPointer(rows), 0),
                      statement_);
    connection_.check(SQLSetStmtAttrW(statement, SQL_ATTR_ROWS_FETCHED_PTR, &fetched_, 0),
                      statement_);
    connection_.check(SQLSetStmtAttrW(statement, SQL_ATTR_ROW_STATUS_PTR, states_.data(), 0),
                      statement_);
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        cells_[i].allocate(rows);
        if (i < bound_) {
            connection_.check(cells_[i].bind(statement, numberOfColumn(i)), statement_);
        }
    }
}

bool BlockReader::readBlock(std::vector<ColumnInfo>& columns, std::vector<ColumnStore>& rows) {
    if (atEnd_) {
        return false;
    }
    if (fetched_ == blockRows_ && blockRows_ < fullRows_) {
        bind(fullRows_);
    }
    fetched_ = 0;
    const SQLRETURN code = SQLFetch(statement_.get());
    if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) {
        connection_.requireNotCancelled();
    }
    if (code == SQL_NO_DATA) {
        atEnd_ = true;
        return false;
    }
    connection_.check(code, statement_);
    connection_.progress();
    checkRows();
    atEnd_ = blockRows_ > 1 && fetched_ < blockRows_;
    const std::size_t before = rows.front().size();
    try {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            takeColumn(i, columns[i], rows[i]);
        }
    } catch (const DriverError&) {
        for (ColumnStore& store : rows) {
            store.truncate(before);
        }
        throw;
    }
    return true;
}

// A value that could not be put into its place fails its row only.
void BlockReader::checkRows() {
    for (std::size_t row = 0; row < fetched_; ++row) {
        if (states_[row] == SQL_ROW_ERROR) {
            throw DriverError(connection_.failure(statement_), kErrorSource);
        }
    }
}

void BlockReader::takeColumn(std::size_t column, ColumnInfo& info, ColumnStore& store) {
    CellBuffer& cells = cells_[column];
    const bool inBlock = column < bound_;
    for (std::size_t row = 0; row < fetched_; ++row) {
        if (!inBlock && !cells.isOpenEnded()) {
            connection_.check(cells.get(statement_.get(), numberOfColumn(column)), statement_);
        }
        if (cells.isOpenEnded() && (!inBlock || cells.isCut(row))) {
            takePieces(row, column, info, store);
        } else {
            cells.append(row, info, store);
        }
    }
}

void BlockReader::takePieces(std::size_t row, std::size_t column, ColumnInfo& info,
                             ColumnStore& store) {
    if (column < bound_) {
        if (!connection_.dialect().driver().cellPieces) {
            refuseValue(info, "it is longer than the database announced");
        }
        connection_.check(SQLSetPos(statement_.get(), static_cast<SQLSETPOSIROW>(row + 1),
                                    SQL_POSITION, SQL_LOCK_NO_CHANGE),
                          statement_);
    }
    bool isNull = false;
    connection_.check(
        cells_[column].readPieces(statement_.get(), numberOfColumn(column), pieces_, isNull),
        statement_);
    if (isNull) {
        store.appendNull();
    } else {
        cells_[column].appendPieces(pieces_, info, store);
    }
}

}  // namespace kap::ado::odbc
