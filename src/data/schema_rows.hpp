#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/driver.hpp"

namespace kap::ado {

// The columns that a schema rowset can be restricted by, in the order of the restrictions. Raises
// 3251 for a rowset that does not exist.
[[nodiscard]] const std::vector<std::string>& restrictionColumns(SchemaEnum kind);

// Cells of a schema rowset; an empty text is Null.
[[nodiscard]] Value schemaNumber(std::int64_t value);
[[nodiscard]] Value schemaFlag(bool value);
[[nodiscard]] Value schemaText(std::string text);
// Schema rowsets do not tell texts of varying length from fixed ones.
[[nodiscard]] DataTypeEnum schemaType(DataTypeEnum type);

// The rows of a schema rowset being gathered by a driver: every driver answers in the same columns.
class SchemaRows {
public:
    SchemaRows(SchemaEnum kind, const SchemaRestrictions& wanted);

    using Cell = std::pair<std::string_view, Value>;
    // Adds a row unless the restrictions exclude it; what is not named is Null. A value has the
    // storage form of its column.
    void add(const std::vector<Cell>& cells);

    [[nodiscard]] Result take() { return std::move(result_); }

private:
    [[nodiscard]] bool isWanted(const std::vector<Cell>& cells) const;

    SchemaEnum kind_;
    const SchemaRestrictions& wanted_;
    Result result_;
};

}  // namespace kap::ado
