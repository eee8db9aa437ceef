#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "data/row_batch.hpp"
#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// A prepared statement that inserts many rows at once. Its parameters stay bound to the same
// memory: drivers prepare a statement anew when something else is bound, and the server reads its
// text then, which for so many parameters takes longer than the rows.
class RowInsertion {
public:
    // Whether the columns have a size that such a statement can announce once and for all.
    [[nodiscard]] static bool fits(const RowBatch& batch);
    // How many rows such a statement has.
    [[nodiscard]] static std::size_t rowsAtOnce(const RowBatch& batch);

    // Prepares it for rows like these. Raises DriverError.
    RowInsertion(OdbcConnection& connection, const RowBatch& batch, std::chrono::seconds timeout);

    [[nodiscard]] bool isFor(const RowBatch& batch) const;
    [[nodiscard]] std::size_t rows() const noexcept { return rows_; }

    // Inserts rows() rows of the stores from `first` on. False, and nothing is inserted, when a
    // value is longer than its column has announced.
    [[nodiscard]] bool run(const RowBatch& batch, std::size_t first, std::chrono::seconds timeout);

private:
    // What a column's parameters are announced as, and how many bytes each value may take.
    struct Form {
        SQLSMALLINT form = SQL_C_WCHAR;
        SQLSMALLINT type = SQL_WVARCHAR;
        SQLULEN size = 0;
        SQLSMALLINT decimals = 0;
        std::size_t room = 0;
    };
    [[nodiscard]] static Form formOf(const ColumnInfo& info);
    void bind();
    [[nodiscard]] bool put(const RowBatch::Column& column, const Form& form, std::size_t row,
                           std::size_t place);
    void take(SQLRETURN code);

    OdbcConnection& connection_;
    std::string text_;
    std::vector<Form> forms_;
    std::size_t rows_ = 0;
    Handle statement_;
    std::vector<std::vector<char>> values_;  // one a column
    std::vector<SQLLEN> lengths_;            // one a parameter
};

}  // namespace kap::ado::odbc
