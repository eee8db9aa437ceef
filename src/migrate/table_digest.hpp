#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <kaputil/ado/recordset.hpp>

#include "data/dialects/sql_dialect.hpp"

namespace kap::migrate {

// What a table holds, boiled down: the same for the same rows, in whatever order and database.
struct TableDigest {
    std::int64_t rows = 0;
    std::uint64_t sum = 0;

    // Adds the recordset's current row; row versions are each database's own and do not count.
    void add(const std::vector<ado::ColumnDefinition>& columns, const ado::Fields& fields);
    [[nodiscard]] std::string text() const;  // of the sum: 16 hexadecimal digits
    friend bool operator==(const TableDigest&, const TableDigest&) = default;
};

}  // namespace kap::migrate
