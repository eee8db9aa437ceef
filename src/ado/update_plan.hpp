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

// How a record is written back.
struct WriteRules {
    // What a row must still hold, beside its key.
    UpdateCriteriaEnum criteria = UpdateCriteriaEnum::adCriteriaUpdCols;
    bool checksVersion = false;  // also the row version, where there is one
    // Whether all of an updated row is read back, and not only what was assigned and what the
    // database computes: a trigger may have changed more.
    bool readsWhole = false;
    // Whether a row that a batch could not write, because somebody else was faster, is read again.
    bool readsConflicts = false;
    std::string onlyTable = {};  // of a join: the one table that is written; empty: any

    friend bool operator==(const WriteRules&, const WriteRules&) = default;
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
// unless the rules say otherwise.
class UpdatePlans {
public:
    // In the order in which the tables are written.
    using Plans = std::shared_ptr<const std::vector<TablePlan>>;

    explicit UpdatePlans(const std::vector<ColumnInfo>& columns) : columns_(columns) {}

    // One for each table that has assigned columns.
    [[nodiscard]] Plans updates(const PendingValues& values, const WriteRules& rules);
    // The tables whose columns are assigned must be one, or none when the result has one table.
    [[nodiscard]] Plans insertion(const PendingValues& values, const WriteRules& rules);
    // The result must have one table.
    [[nodiscard]] Plans deletion(const WriteRules& rules);
    // One for each table of the result.
    [[nodiscard]] Plans reads(const WriteRules& rules);

private:
    // What records have in common that are changed alike.
    struct Change {
        RowPlan::Kind kind = RowPlan::Kind::Update;
        WriteRules rules;
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
