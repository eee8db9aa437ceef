#pragma once

#include <cstdint>
#include <optional>

#include "engine/executor/session_state.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// The whole numbers that scripts ask for between their statements.
struct SystemNumbers {
    std::int64_t error = 0;
    std::int64_t rowCount = 0;
    std::int64_t transactions = 0;
    std::int64_t fetchStatus = 0;
};

// What most scripts compute, after each statement or in each turn of a loop, is not worth a query.

// The value of "@@error", "@i", "12" for a variable of int or bigint, of "'text'" for one that has
// room for it. Nothing for any other expression.
[[nodiscard]] std::optional<Value> simpleValue(const tsql::Expression& expression,
                                               const tsql::TypeSpec& type, const Frame& frame,
                                               const SystemNumbers& numbers);

// Whether "@@error <> 0", "@i < 10" and their like hold. Nothing for any other condition.
[[nodiscard]] std::optional<bool> simpleCondition(const tsql::Expression& condition,
                                                  const Frame& frame, const SystemNumbers& numbers);

}  // namespace kap::engine
