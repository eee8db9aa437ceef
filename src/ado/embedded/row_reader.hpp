#pragma once

#include <vector>

#include "ado/driver.hpp"
#include "ado/embedded/sqlite.hpp"

namespace kap::ado::embedded {

// Copies the rows of a running statement into column stores. What each column needs is decided
// once, before the first row.
class RowReader {
public:
    explicit RowReader(const std::vector<ColumnInfo>& columns);

    // Takes the row that stands ready, one cell a store. Raises ServerError 245 for a value that
    // another program has put into a column whose type it is not.
    void read(const PreparedStatement& statement, std::vector<ColumnStore>& stores) const;

private:
    [[noreturn]] void refuse(std::size_t column) const;

    const std::vector<ColumnInfo>& columns_;
    std::vector<Storage> storages_;
};

}  // namespace kap::ado::embedded
