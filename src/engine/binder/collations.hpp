#pragma once

#include <memory>
#include <vector>

#include "engine/binder/bound_expression.hpp"

namespace kap::engine {

// The one order that COLLATE asks for among the values; null: none does. Error 468 when two do not
// agree.
[[nodiscard]] std::shared_ptr<const TextCollation> commonCollation(
    const std::vector<BoundExpression>& values, const char* operation, int line);

// Gives all of the values that order.
void compareInOneCollation(std::vector<BoundExpression>& values, const char* operation, int line);

}  // namespace kap::engine
