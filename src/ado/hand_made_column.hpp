#pragma once

#include <cstdint>
#include <optional>

#include "data/driver.hpp"

namespace kap::ado {

// The bits that a client gives a column, or unset when it leaves them to the type.
[[nodiscard]] std::optional<std::int32_t> attributesGiven(std::int32_t bits);

// Makes a column of a recordset made by hand one of a type, with what follows from it. `size`
// counts for texts and binaries. Raises 3001 for a type that a column cannot have and for a text or
// binary that is not long and has no size.
void describeByHand(ColumnInfo& column, DataTypeEnum type, std::int32_t size,
                    std::optional<std::int32_t> attributes);

}  // namespace kap::ado
