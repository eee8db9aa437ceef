#pragma once

#include <optional>

#include "tsql/server_error.hpp"

namespace kap::engine {

// Where a SQL function leaves the server's error that made it fail.
//
// SQLite carries only a text from a function to the failed step; the number travels here. One slot
// belongs to one connection and outlives it. Whoever runs statements clears it before a step and,
// when the step fails and it is filled, throws what it holds instead of SQLite's own error.
struct ErrorSlot {
    std::optional<tsql::ServerError> error;
};

}  // namespace kap::engine
