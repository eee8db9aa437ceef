#pragma once

#include <cstddef>
#include <utility>

#include "ado/row_table.hpp"
#include "ado/update_plan.hpp"

namespace kap::ado {

// Writes rows of a table to the database and reads them again. The table itself is left as it is:
// what the database then holds is answered, for whoever asked to take it in.
//
// Each raises kConcurrency when the row is not there as it was last seen, and the database's
// errors.
class RowWriter {
public:
    // `plans` are those of the table's columns.
    RowWriter(const RowTable& table, Session& session, UpdatePlans& plans, WriteRules rules)
        : table_(table), session_(session), plans_(plans), rules_(std::move(rules)) {}

    // Writes changed columns of a row; all tables of a join or none. The answer are the changes and
    // what else the row holds by now that it did not when it was fetched.
    [[nodiscard]] PendingValues update(std::size_t row, const PendingValues& changes) const;
    [[nodiscard]] PendingValues insert(const PendingValues& values) const;
    void remove(std::size_t row) const;
    // The row as it stands; raises kRowNotFound when it is gone.
    [[nodiscard]] PendingValues read(std::size_t row) const;

private:
    [[nodiscard]] RowChange changeOf(const TablePlan& plan, std::size_t row,
                                     const PendingValues& values) const;
    [[nodiscard]] ChangeOutcome write(const RowChange& change) const;

    const RowTable& table_;
    Session& session_;
    UpdatePlans& plans_;
    WriteRules rules_;
};

}  // namespace kap::ado
