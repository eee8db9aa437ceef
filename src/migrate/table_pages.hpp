#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "data/dialects/sql_dialect.hpp"
#include "data/driver.hpp"

namespace kap::migrate {

// The rows of a table in the order of its key, so many at a time that they find room in memory; a
// table without key comes in one piece.
class TablePages {
public:
    TablePages(ado::Connection& connection, const ado::SqlDialect& dialect, ado::ObjectName table,
               std::vector<ado::ColumnDefinition> columns, const std::vector<std::string>& key);

    // What is done with a page, or with the rows of it from `first` on.
    using Reader = std::function<void(const ado::Result& page, std::size_t first)>;
    // Calls with every page from the row `first` on (counted from 0).
    void read(std::int64_t first, const Reader& reader);

private:
    [[nodiscard]] std::string query(std::int64_t first) const;
    // What rows behind the last one have, from this part of the key on.
    [[nodiscard]] std::string behind(std::size_t part) const;
    void remember(const ado::Result& page);

    ado::Connection& connection_;
    const ado::SqlDialect& dialect_;
    ado::ObjectName table_;
    std::vector<ado::ColumnDefinition> columns_;
    std::vector<std::size_t> key_;   // places among the columns
    std::vector<std::string> last_;  // the key of the last row, as literals
};

}  // namespace kap::migrate
