#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "data/driver.hpp"
#include "drivers/odbc/api.hpp"

namespace kap::ado::odbc {

// Raised for a value that cannot be kept as its column's type says.
[[noreturn]] void refuseValue(const ColumnInfo& column, const std::string& why);

// Where the interface puts the cells of one column of a block, and how they are taken from there.
class CellBuffer {
public:
    explicit CellBuffer(const ColumnInfo& column);

    // Whether cells of this column can be put there, too.
    [[nodiscard]] bool fits(const ColumnInfo& column) const { return isLike(CellBuffer(column)); }

    // Bytes of one row, with what tells its length.
    [[nodiscard]] std::size_t rowBytes() const noexcept { return cellBytes_ + sizeof(SQLLEN); }
    // Whether a cell may be longer than its place.
    [[nodiscard]] bool isOpenEnded() const noexcept { return open_; }

    void allocate(std::size_t rows);
    [[nodiscard]] SQLRETURN bind(SQLHSTMT statement, SQLUSMALLINT number);

    // Gets the cell of the current row into the first place, for a column that is not bound.
    [[nodiscard]] SQLRETURN get(SQLHSTMT statement, SQLUSMALLINT number);

    // Whether the cell is longer than what came of it.
    [[nodiscard]] bool isCut(std::size_t row) const noexcept;
    [[nodiscard]] bool isNull(std::size_t row) const noexcept {
        return lengths_[row] == SQL_NULL_DATA;
    }

    // Appends a cell; the column may get another scale (see growScale).
    void append(std::size_t row, ColumnInfo& column, ColumnStore& store);
    // The same for bytes that were read in pieces.
    void appendPieces(const std::string& bytes, ColumnInfo& column, ColumnStore& store);

    // Reads the cell of the current row from its beginning, piece by piece.
    [[nodiscard]] SQLRETURN readPieces(SQLHSTMT statement, SQLUSMALLINT number, std::string& bytes,
                                       bool& isNull) const;

private:
    [[nodiscard]] bool isLike(const CellBuffer& other) const noexcept {
        return form_ == other.form_ && cellBytes_ == other.cellBytes_ &&
               terminator_ == other.terminator_ && open_ == other.open_;
    }
    template <class Value>
    [[nodiscard]] const Value& valueAt(std::size_t row) const {
        return *reinterpret_cast<const Value*>(cells_.get() + row * cellBytes_);
    }
    [[nodiscard]] std::size_t lengthAt(std::size_t row) const {
        return static_cast<std::size_t>(lengths_[row]);
    }
    void appendStamp(std::size_t row, const ColumnInfo& column, ColumnStore& store) const;
    void appendText(const char16_t* units, std::size_t count, const ColumnInfo& column,
                    ColumnStore& store);

    SQLSMALLINT form_ = SQL_C_WCHAR;
    std::size_t cellBytes_ = 0;
    std::size_t terminator_ = 0;  // bytes of a cell's place that stay behind its text
    bool open_ = false;
    std::unique_ptr<char[]> cells_;
    std::vector<SQLLEN> lengths_;
    std::string utf8_;  // made anew for each text, kept for its memory
};

}  // namespace kap::ado::odbc
