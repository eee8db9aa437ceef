#pragma once

#include "engine/values/error_slot.hpp"

struct sqlite3;

namespace kap::engine {

// Gives a connection the functions that translated statements call (their names start with kap_).
//
// `slot` receives the errors of failing functions and must outlive the connection. kap_rowversion
// and kap_identity are not among them: they are the session's. Raises SqliteError when
// SQLite refuses a registration.
void registerFunctions(sqlite3* connection, ErrorSlot& slot);

}  // namespace kap::engine
