#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <kaputil/data/enumerations.hpp>

#include "data/value.hpp"

// How single rows are written to a database and read from it again.
namespace kap::ado {

// A column of a table, with the type of the values that a client gives for it.
struct RowColumn {
    std::string name;  // of the base column
    DataTypeEnum type = DataTypeEnum::adEmpty;
    std::uint8_t numericScale = 255;
};

// How rows of a table are changed: made once for all rows that are changed alike, and never
// changed. What belongs to a single row is in its RowChange.
class RowPlan {
public:
    enum class Kind : std::uint8_t { Insert, Update, Delete, Read };

    struct Columns {
        std::vector<RowColumn> values = {};    // that are written (insert, update)
        std::vector<RowColumn> criteria = {};  // what the row must hold, exactly (all but insert)
        // To read from the row as it stands afterwards; decimals in the scale of the column here.
        std::vector<RowColumn> readBack = {};
    };

    RowPlan(Kind kind, std::string table, Columns columns);

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    [[nodiscard]] const std::string& table() const noexcept { return table_; }
    [[nodiscard]] const std::vector<RowColumn>& values() const noexcept { return columns_.values; }
    [[nodiscard]] const std::vector<RowColumn>& criteria() const noexcept {
        return columns_.criteria;
    }
    [[nodiscard]] const std::vector<RowColumn>& readBack() const noexcept {
        return columns_.readBack;
    }
    // The same text for all plans that say the same, by which a driver finds what it has made of
    // one.
    [[nodiscard]] const std::string& key() const noexcept { return key_; }

private:
    Kind kind_;
    std::string table_;
    Columns columns_;
    std::string key_;
};

// One row to insert, update, delete, or only to read again.
struct RowChange {
    std::shared_ptr<const RowPlan> plan;
    // One for each of the plan's columns, in their order; monostate is Null.
    std::vector<Value> values = {};
    std::vector<Value> criteria = {};
};

struct ChangeOutcome {
    std::int64_t rowsTouched = 0;
    std::vector<Value> readBack;  // of the touched row, when there was exactly one
};

}  // namespace kap::ado
