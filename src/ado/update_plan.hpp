#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/driver.hpp"

namespace kap::ado {

// The values assigned to a record, one entry a column; unset: not assigned.
using PendingValues = std::vector<std::optional<Value>>;

// What a row must still hold to be written, beside its key.
struct RowCheck {
    UpdateCriteriaEnum criteria = UpdateCriteriaEnum::adCriteriaUpdCols;
    bool version = false;  // also the row version, where there is one

    friend bool operator==(const RowCheck&, const RowCheck&) = default;
};

// How records of a result are written to one of the tables behind it: what the driver is told, and
// which columns of the result, by ordinal, give its values and take what it answers.
struct TablePlan {
    struct Taken {
        std::size_t answer = 0;  // a column that is read back
        std::size_t column = 0;
    };
    std::shared_ptr<const RowPlan> plan;
    std::vector<std::size_t> values = {};
    std::vector<std::size_t> criteria = {};
    std::vector<Taken> taken = {};
};

// The plans by which the records of a result are written back, each made once for the records that
// are changed alike.
//
// A row is located by the table's key when the result holds it whole, else by all of the table's
// columns in the result; an update must also find the changed columns as they were fetched,
// unless the check says otherwise.
class UpdatePlans {
public:
    // In the order in which the tables are written.
    using Plans = std::shared_ptr<const std::vector<TablePlan>>;

    explicit UpdatePlans(const std::vector<ColumnInfo>& columns) : columns_(columns) {}

    // One for each table that has assigned columns.
    [[nodiscard]] Plans updates(const PendingValues& values, RowCheck check);
    // The tables whose columns are assigned must be one, or none when the result has one table.
    [[nodiscard]] Plans insertion(const PendingValues& values);
    // The result must have one table.
    [[nodiscard]] Plans deletion(RowCheck check);
    // One for each table of the result.
    [[nodiscard]] Plans reads();

private:
    // What records have in common that are changed alike.
    struct Change {
        RowPlan::Kind kind = RowPlan::Kind::Update;
        RowCheck check;
        std::vector<bool> assigned;  // by column

        friend bool operator==(const Change&, const Change&) = default;
    };
    struct Made {
        Change change;
        Plans plans;
    };

    [[nodiscard]] Plans of(Change change);
    [[nodiscard]] std::vector<TablePlan> make(const Change& change) const;
    [[nodiscard]] std::vector<std::string> tablesOf(const Change& change) const;

    const std::vector<ColumnInfo>& columns_;
    std::list<Made> made_;  // the last used first
};

}  // namespace kap::ado
