#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "cli/commands/import/cell_reader.hpp"
#include "cli/commands/import/delimited_text.hpp"
#include "migrate/row_import.hpp"

namespace kap::cli {

// What is wrong with a row of a file.
struct RowFault {
    std::int64_t row = 0;     // of the file's rows, from 1, without the header
    std::int64_t line = 0;    // on which the row begins
    std::string column = {};  // empty: it is the whole row's
    std::string reason = {};
};

// Brings the rows of a file into the columns of a table.
class TableFiller {
public:
    TableFiller(ado::Connection& connection, const std::string& table,
                std::vector<ado::ColumnDefinition> columns, CellFormat format, std::string null);

    // Inserts the rows that are left. `tell` is called for each fault, and says whether to go on;
    // `progress` from time to time. Gives back how many rows were inserted. Raises the database's
    // errors that are about no row.
    std::int64_t fill(DelimitedText& text, const std::function<bool(const RowFault&)>& tell,
                      const std::function<void(std::size_t)>& progress);

private:
    [[nodiscard]] std::vector<RowFault> read(const std::vector<DelimitedValue>& row);
    [[nodiscard]] migrate::ImportedValue valueOf(const DelimitedValue& given,
                                                 const ado::ColumnDefinition& column) const;
    [[nodiscard]] std::vector<RowFault> insert();
    [[nodiscard]] std::vector<RowFault> refusedValues();

    std::vector<ado::ColumnDefinition> columns_;
    CellFormat format_;
    std::string null_;
    migrate::RowImport rows_;
    std::vector<migrate::ImportedValue> values_;
};

}  // namespace kap::cli
