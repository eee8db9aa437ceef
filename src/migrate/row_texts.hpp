#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <kaputil/ado/recordset.hpp>

namespace kap::migrate {

// The values of a recordset's current record as cellText() writes them, for readers of many rows:
// written straight from the fetched rows where that is the same, not by way of Variants.
class RowTexts {
public:
    // The recordset must be open, and outlive this.
    explicit RowTexts(ado::Recordset& rows);

    [[nodiscard]] std::size_t columnCount() const noexcept { return columns_.size(); }
    // Whether a column's texts may hold anything, and not just digits, signs and letters.
    [[nodiscard]] bool isFree(std::size_t column) const { return columns_[column].free; }
    // Appends the value of the current record; false, and nothing is appended, for Null. Raises
    // what reading the field raises.
    [[nodiscard]] bool append(std::string& text, std::size_t column) const;
    // Whether the next record is still to come from the database.
    [[nodiscard]] bool waitsForNext() const;

private:
    struct Column {
        Ref<ado::Field> field;
        bool asStored;  // the text of the stored cell is that of the field
        bool free;
        std::size_t decimals;  // of a decimal that is stored without zeros at its end
    };

    ado::Recordset& rows_;
    std::vector<Column> columns_;
};

}  // namespace kap::migrate
