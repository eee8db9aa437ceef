#include <chrono>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/catalog/server_identity.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "engine/values/value.hpp"
#include "platform/random_name.hpp"

// Global temporary tables (##t). Their rows lie in the file, where every connection finds them.
// Each has a note of the session that made it, and ends with that session, which holds an
// application lock as long as it lives. What a session that died has left goes when the next one
// begins its work, if that is of the same user on the same machine: others cannot tell.
namespace kap::engine {

namespace {

constexpr std::size_t kUuidLength = 36;

std::string lifeOf(std::string_view session) {
    return "kap global tables of " + std::string(session);
}

std::string userHere() {
    return hostName() + "/" + loginName();
}

}  // namespace

std::string ScriptRunner::ownerOfGlobalTables() {
    if (globalOwner_.empty()) {
        std::string session = platform::randomUuid();
        (void)applicationLocks_.take(lifeOf(session), ApplicationLocks::kExclusive,
                                     ApplicationLocks::Owner::Session, std::chrono::milliseconds(0),
                                     [] {});
        globalOwner_ = std::move(session);
    }
    return globalOwner_ + " " + userHere();
}

void ScriptRunner::dropGlobalTables(const std::vector<std::string>& names) {
    if (names.empty()) return;
    Transactions::WriteScope scope(transactions_);
    for (const std::string& name : names) {
        counters_.remove({name, false});
        catalogue_.stored().removeOf(name);
        const sql::Drop drop{sql::SchemaObject::Table, sql::Database::Main, name, true};
        connection_.database().run(sqlOf(drop).c_str());
    }
    scope.keep();
    catalogue_.invalidate();
}

// Before the first request: asking is one look at SQLite's own table where there are none.
void ScriptRunner::dropAbandonedTables() {
    if (lookedForAbandoned_ || transactions_.depth() > 0) return;
    lookedForAbandoned_ = true;
    try {
        {
            PreparedStatement look(connection_.handle(),
                                   "SELECT 1 FROM main.sqlite_schema WHERE type = 'table' AND "
                                   "substr(name, 1, 2) = '##' LIMIT 1");
            if (!look.step()) return;
        }
        std::vector<std::string> names;
        for (const StoredObject& note : catalogue_.objects()) {
            if (note.kind != StoredKind::GlobalTable || note.text.size() <= kUuidLength) continue;
            const std::string session = note.text.substr(0, kUuidLength);
            if (note.text.substr(kUuidLength + 1) == userHere() &&
                applicationLocks_.isFree(lifeOf(session), ApplicationLocks::kExclusive)) {
                names.push_back(note.parent);
            }
        }
        dropGlobalTables(names);
    } catch (const SqliteError&) {
        // The file is only read, or somebody writes it: the next session looks again.
    }
}

void ScriptRunner::dropOwnGlobalTables() noexcept {
    if (globalOwner_.empty()) return;
    try {
        // Nobody waits for a connection that closes.
        constexpr int kPatience = 2000;
        sqlite3_busy_timeout(connection_.handle(), kPatience);
        if (transactions_.depth() > 0) transactions_.rollback();
        catalogue_.refresh();
        std::vector<std::string> names;
        for (const StoredObject& note : catalogue_.objects()) {
            const bool own =
                note.kind == StoredKind::GlobalTable && note.text.starts_with(globalOwner_);
            if (own) names.push_back(note.parent);
        }
        dropGlobalTables(names);
    } catch (const std::exception&) {
        // Its lock is free from now on, by which the next session knows that they are nobody's.
    }
}

}  // namespace kap::engine
