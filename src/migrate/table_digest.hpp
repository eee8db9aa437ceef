#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/dialects/sql_dialect.hpp"
#include "data/driver.hpp"

namespace kap::migrate {

// What a table holds, boiled down: the same for the same rows, in whatever order and database.
struct TableDigest {
    std::int64_t rows = 0;
    std::uint64_t sum = 0;

    // Adds the rows of a page from `first` on; row versions are each database's own and do not
    // count.
    void add(const std::vector<ado::ColumnDefinition>& columns, const ado::Result& page,
             std::size_t first);
    [[nodiscard]] std::string text() const;  // of the sum: 16 hexadecimal digits
    friend bool operator==(const TableDigest&, const TableDigest&) = default;
};

}  // namespace kap::migrate
