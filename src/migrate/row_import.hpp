#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>

#include "data/row_inserter.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::migrate {

// A value to import in storage form, see data/value.hpp.
using ImportedValue = ado::Value;

// The type in which a column's values are given to the import: whole numbers as such, floating
// numbers and dates (linear days from 30 December 1899) as doubles, bytes as a Blob; decimals,
// amounts and everything else as texts, which the database converts.
[[nodiscard]] ado::DataTypeEnum importedType(const ado::ColumnDefinition& column);

// The columns of a table, in its order. Raises the database's error when there is none.
[[nodiscard]] std::vector<ado::ColumnDefinition> importableColumns(ado::Connection& connection,
                                                                   const std::string& table);

// Inserts rows into a table of an open connection, which must outlive it.
class RowImport {
public:
    RowImport(ado::Connection& connection, const std::string& table,
              const std::vector<ado::ColumnDefinition>& columns);

    // A value for each of the columns. Raises AutomationError for a row that the database refuses;
    // it is not inserted then.
    void insert(const std::vector<ImportedValue>& values);
    // Raises AutomationError when the column cannot hold the value; a database that finds that out
    // with the row says nothing.
    void check(std::size_t column, const ImportedValue& value);

private:
    std::shared_ptr<ado::Session> session_;
    std::shared_ptr<const ado::RowPlan> insertion_;
    std::unique_ptr<ado::RowInserter> inserter_;  // unset: row by row
};

}  // namespace kap::migrate
