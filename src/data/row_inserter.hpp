#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "data/driver.hpp"

namespace kap::ado {

// Inserts many rows of a table, one after the other.
class RowInserter {
public:
    RowInserter() = default;
    RowInserter(const RowInserter&) = delete;
    RowInserter& operator=(const RowInserter&) = delete;
    virtual ~RowInserter() = default;

    // A value for each column of the plan, in order, of its type. Raises DriverError for a row
    // that the database refuses: it is not inserted then, and the next ones can be.
    virtual void insert(const std::vector<Value>& values) = 0;
    // Raises DriverError when the column cannot hold the value, whatever stands in the others.
    virtual void check(std::size_t column, const Value& value) = 0;
};

// A session that inserts many rows faster than one by one.
class InsertsRows {
public:
    InsertsRows() = default;
    InsertsRows(const InsertsRows&) = delete;
    InsertsRows& operator=(const InsertsRows&) = delete;
    virtual ~InsertsRows() = default;

    // What inserts as a plan says, for as long as the session lives and the table stays as it is;
    // null for a table whose rows must be inserted one by one. Raises DriverError when there is no
    // such table or column, and for a column that the database fills itself.
    [[nodiscard]] virtual std::unique_ptr<RowInserter> inserter(const RowPlan& insertion) = 0;
};

}  // namespace kap::ado
