#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "data/column_store.hpp"
#include "data/driver.hpp"

namespace kap::ado {

// Rows to append to a table. Names are as they stand in a statement.
struct RowBatch {
    struct Column {
        std::string name;
        std::string
            mark;  // a parameter, "?", cast to the column's type where the server wants that
        const ColumnInfo* info = nullptr;  // what the values are
        const ColumnStore* values = nullptr;
    };
    std::string table;
    std::vector<Column> columns;
    std::size_t first = 0;  // of the rows in the stores
    std::size_t count = 0;

    // The statement that inserts so many rows, by parameters in the rows' order.
    [[nodiscard]] std::string insertion(std::size_t rows) const;
    // "INSERT INTO table (a, b) VALUES "
    [[nodiscard]] std::string beginning() const;
};

// Appends them by requests with parameters, so many rows at once that no statement has more than
// `most` parameters.
void appendByRequests(Session& session, const RowBatch& batch, std::size_t most);

}  // namespace kap::ado
