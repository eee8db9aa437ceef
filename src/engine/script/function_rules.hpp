#pragma once

#include "tsql/statements.hpp"

namespace kap::engine {

// A function is called in the middle of statements that may be undone or run again, so that it may
// change nothing but its own table variables. Errors 443, and 444 for a SELECT whose rows nobody
// would get.
void requireNoSideEffects(const tsql::Script& body);

}  // namespace kap::engine
