#pragma once

#include <string_view>

namespace kap::engine {

// Whether every server has a procedure of that name, in lower case, that is not here: a call of it
// is refused as such and not as a mistake.
[[nodiscard]] bool isServerProcedure(std::string_view name);

}  // namespace kap::engine
