#pragma once

#include <memory>
#include <vector>

#include "engine/binder/bound_expression.hpp"

namespace kap::engine {

// What the operands of an operation have as their order together, and how it wins against others.
// Error 468 when COLLATE asks for two orders.
struct Coercion {
    std::shared_ptr<const TextCollation> collation;
    Coercibility coercibility = Coercibility::Default;
};
[[nodiscard]] Coercion coerced(const std::vector<BoundExpression>& values, const char* operation,
                               int line);

// Gives a text that an operation makes of others the order that they have together.
void inheritCollation(BoundExpression& result, const std::vector<BoundExpression>& values,
                      const char* operation, int line);

// Errors 451 and 457 for a text without an order: in a column of a result, and in one of a table.
void requireCollation(const BoundExpression& value, std::size_t column, int line);
void requireCollation(const BoundExpression& value, const tsql::TypeSpec& into, int line);

// The one order in which values are compared; null: the database's. Errors 468 and 446 when there
// is none.
[[nodiscard]] std::shared_ptr<const TextCollation> commonCollation(
    const std::vector<BoundExpression>& values, const char* operation, int line);

// Gives all of the values that order.
void compareInOneCollation(std::vector<BoundExpression>& values, const char* operation, int line);

}  // namespace kap::engine
