#pragma once

#include <string>
#include <string_view>

#include "data/driver.hpp"
#include "data/value.hpp"

// Cells of the type adVariant: each value has a type of its own. A cell is a text that holds
// both; nobody but these functions looks into it.
namespace kap::ado {

struct VariantCell {
    ColumnInfo column;  // its type, scale and engineType, as if a whole column were of it
    Value value;        // never Null
};

// A value as such a cell; it is not Null.
[[nodiscard]] std::string packVariantCell(const ColumnInfo& column, const Value& value);

// The same back. A text that is no such cell is taken as the text that it is.
[[nodiscard]] VariantCell unpackVariantCell(std::string_view cell);

// The plain text of the value, as appendCellText() gives that of other cells.
[[nodiscard]] std::string variantCellText(std::string_view cell);

}  // namespace kap::ado
