#pragma once

#include <optional>
#include <vector>

#include "data/driver.hpp"
#include "engine/sqlite/sqlite.hpp"
#include "tsql/type_spec.hpp"

namespace kap::engine {

// Copies the rows of a running statement into column stores. What each column needs is decided
// once, before the first row.
class RowReader {
public:
    explicit RowReader(const std::vector<ado::ColumnInfo>& columns);

    // Takes the row that stands ready, one cell a store. Raises ServerError 245 for a value that
    // another program has put into a column whose type it is not.
    void read(const PreparedStatement& statement, std::vector<ado::ColumnStore>& stores) const;

private:
    [[noreturn]] void refuse(std::size_t column) const;
    void tell(std::size_t column, sqlite3_value* value, ado::ColumnStore& store) const;

    const std::vector<ado::ColumnInfo>& columns_;
    std::vector<ado::Storage> storages_;
    std::vector<std::optional<tsql::TypeSpec>> told_;  // of columns that clients get otherwise
};

}  // namespace kap::engine
