#pragma once

#include <vector>

#include "data/driver.hpp"
#include "engine/catalog/tables.hpp"
#include "engine/plan/statement_plan.hpp"

namespace kap::engine {

// How a client sees a type: its data-access code, size, precision and scale, as the server's own
// provider reports them. Only these members of the answer are set.
[[nodiscard]] ado::ColumnInfo typeInfo(const tsql::TypeSpec& type);

// The type whose storage form a client's value of this data-access type has.
[[nodiscard]] tsql::TypeSpec typeOf(ado::DataTypeEnum type, std::uint8_t numericScale);

// What a result tells about its columns. A column is marked as key only when the result has every
// part of its table's key.
[[nodiscard]] std::vector<ado::ColumnInfo> columnInfos(const std::vector<ResultColumn>& columns,
                                                       const Catalogue& catalogue);

}  // namespace kap::engine
