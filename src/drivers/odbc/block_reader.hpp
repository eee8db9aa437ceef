#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "drivers/odbc/cell_buffer.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// Reads the rows of an open result, a block at a time. A block has as many rows as fit into a fixed
// number of bytes. What is longer than its place in the block is read again, in pieces; a driver
// that cannot do that is asked row by row, and then the columns from the first without a limit on
// are not in the block at all.
class BlockReader {
public:
    // Binds the columns to the statement, which must not be used otherwise meanwhile.
    BlockReader(OdbcConnection& connection, const Handle& statement,
                const std::vector<ColumnInfo>& columns);
    ~BlockReader();
    BlockReader(const BlockReader&) = delete;
    BlockReader& operator=(const BlockReader&) = delete;

    // Whether a result with these columns can be read into the same memory: the reader has not gone
    // beyond the first block of the one before.
    [[nodiscard]] bool fits(const std::vector<ColumnInfo>& columns) const;
    // The statement has been run again.
    void restart() noexcept;

    // Appends one block; false when there was none any more. Raises DriverError; the stores have
    // then all the same number of rows.
    [[nodiscard]] bool readBlock(std::vector<ColumnInfo>& columns, std::vector<ColumnStore>& rows);
    // Whether the last block has been read.
    [[nodiscard]] bool atEnd() const noexcept { return atEnd_; }

private:
    [[nodiscard]] std::size_t boundOf(const std::vector<ColumnInfo>& columns) const;
    void bind(std::size_t rows);
    void checkRows();
    void takeColumn(std::size_t column, ColumnInfo& info, ColumnStore& store);
    void takePieces(std::size_t row, std::size_t column, ColumnInfo& info, ColumnStore& store);

    OdbcConnection& connection_;
    const Handle& statement_;
    std::vector<CellBuffer> cells_;
    std::size_t bound_ = 0;  // the columns in the block; those behind are read in pieces
    std::size_t blockRows_ = 0;
    std::size_t firstRows_ = 0;
    std::size_t fullRows_ = 0;  // of every block but the first
    std::vector<SQLUSMALLINT> states_;
    SQLULEN fetched_ = 0;
    bool atEnd_ = false;
    std::string pieces_;
};

}  // namespace kap::ado::odbc
