#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "tsql/statements.hpp"

namespace kap::engine {

// Which of the parameters of a system procedure an argument of its call is for: the one that it
// names, or the one at its place. Errors 8144 and 8145.
[[nodiscard]] std::size_t placeOfArgument(const tsql::ExecuteStatement& call, std::size_t argument,
                                          std::span<const char* const> parameters,
                                          const std::string& procedure, int line);

}  // namespace kap::engine
