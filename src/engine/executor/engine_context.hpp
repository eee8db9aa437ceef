#pragma once

#include "engine/catalog/counters.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/sqlite/file_connection.hpp"

namespace kap::engine {

// What everything that runs on one connection works with. The session owns it.
struct EngineContext {
    FileConnection& connection;
    SchemaCatalogue& catalogue;
    Counters& counters;
    Transactions& transactions;
    SessionState& state;
};

}  // namespace kap::engine
