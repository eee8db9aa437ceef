#pragma once

#include <string>
#include <vector>

#include "engine/catalog/tables.hpp"

// What a new foreign key must hold to beside its columns.
namespace kap::engine {

// Whether one of the keys has exactly these columns, in whatever order.
[[nodiscard]] bool hasKeyOf(const std::vector<std::vector<std::string>>& keys,
                            const std::vector<std::string>& columns);

// Whether one DELETE or UPDATE would reach a table more than once through what the last of
// `references` and the others do by themselves.
[[nodiscard]] bool reachesTwice(const std::vector<Reference>& references);

}  // namespace kap::engine
