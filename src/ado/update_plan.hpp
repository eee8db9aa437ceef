#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "data/driver.hpp"

namespace kap::ado {

class RowTable;

// The values assigned to a record, one entry a column; unset: not assigned.
using PendingValues = std::vector<std::optional<Value>>;

// What a row must still hold to be written, beside its key.
struct RowCheck {
    UpdateCriteriaEnum criteria = UpdateCriteriaEnum::adCriteriaUpdCols;
    bool version = false;  // also the row version, where there is one
};

// Plans how a record of a result is written back to the tables behind it.
//
// A row is located by the table's key when the result holds it whole, else by all of the table's
// columns in the result; an update must also find the changed columns as they were fetched,
// unless the check says otherwise.
class UpdatePlanner {
public:
    UpdatePlanner(const RowTable& rows, std::size_t row, RowCheck check);

    // One change for each table that has assigned columns.
    [[nodiscard]] std::vector<RowChange> updates(const PendingValues& values) const;
    // The tables whose columns are assigned must be one, or none when the result has one table.
    [[nodiscard]] RowChange insertion(const PendingValues& values) const;
    [[nodiscard]] RowChange deletion() const;
    // One for each table of the result.
    [[nodiscard]] std::vector<RowChange> reads() const;

private:
    [[nodiscard]] RowChange located(RowChange::Kind kind, const std::string& table) const;
    [[nodiscard]] ColumnValue fetched(std::size_t column) const;
    [[nodiscard]] std::vector<std::string> tables() const;

    const RowTable& rows_;
    const Result& result_;
    std::size_t row_;
    RowCheck check_;
};

}  // namespace kap::ado
