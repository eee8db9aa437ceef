#include "engine/engine_session.hpp"

#include <filesystem>
#include <string>

namespace kap::engine {
namespace {

// Scripts know the database by its file's name.
std::string databaseNameOf(const Options& options) {
    return options.inMemory() ? "memory" : std::filesystem::path(options.source).stem().string();
}

}  // namespace

// All parts make statements and functions of their own, for which there may be no memory.
EngineSession::EngineSession(const Options& options) try
    : connection_(options),
      counters_(connection_.database(), connection_.errorSlot()),
      catalogue_(connection_.database(), counters_),
      transactions_(connection_, counters_, catalogue_),
      scripts_(context_),
      functions_(context_, scripts_) {
    catalogue_.setDatabaseName(databaseNameOf(options));
} catch (const SqliteError& error) {
    throw openError(error, options.place());
}

void EngineSession::execute(ado::Request& request, ado::Reply& reply) {
    reported([&] { scripts_.run(request, reply); });
}

void EngineSession::begin() {
    reported([&] { transactions_.begin(); });
}

void EngineSession::commit() {
    reported([&] { transactions_.commit(); });
}

void EngineSession::rollback() {
    reported([&] {
        if (!transactions_.takeLost()) {
            transactions_.rollback();
        }
    });
}

}  // namespace kap::engine
