#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "data/dialects/sql_dialect.hpp"

namespace kap::migrate {

// The rows of a table in the order of its key, so many at a time that they find room in memory; a
// table without key comes in one piece.
class TablePages {
public:
    TablePages(ado::Connection& connection, const ado::SqlDialect& dialect, std::string table,
               std::vector<ado::ColumnDefinition> columns, const std::vector<std::string>& key);

    // Calls with every page from the row `first` on (counted from 0), each at its first row.
    void read(std::int64_t first, const std::function<void(const Ref<ado::Recordset>&)>& page);

private:
    [[nodiscard]] std::string query(std::int64_t first) const;
    // What rows behind the last one have, from this part of the key on.
    [[nodiscard]] std::string behind(std::size_t part) const;
    void remember(const Ref<ado::Recordset>& rows);

    ado::Connection& connection_;
    const ado::SqlDialect& dialect_;
    std::string table_;
    std::vector<ado::ColumnDefinition> columns_;
    std::vector<std::size_t> key_;   // places among the columns
    std::vector<std::string> last_;  // the key of the last row, as literals
};

}  // namespace kap::migrate
