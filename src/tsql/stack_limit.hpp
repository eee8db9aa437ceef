#pragma once

#include "base/stack.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

// Each step of a recursion over what a caller has written begins with it: error 8631 where the
// stack of the thread ends.
inline void requireStack(int line) {
    if (stackLeft() < kStackReserve) throw outOfStack(line);
}

}  // namespace kap::tsql
