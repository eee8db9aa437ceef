#pragma once

#include <utility>

#include "engine/catalog/schema_catalogue.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/sqlite/file_connection.hpp"

namespace kap::engine {

// Gives the settings back at its end: what a procedure, a trigger or a text that is run sets ends
// with it.
class SettingsScope {
public:
    SettingsScope(SessionState& state, FileConnection& connection, SchemaCatalogue& catalogue)
        : state_(state), connection_(connection), catalogue_(catalogue), before_(state) {}
    SettingsScope(const SettingsScope&) = delete;
    SettingsScope& operator=(const SettingsScope&) = delete;
    ~SettingsScope() {
        SessionSettings& now = state_;
        const bool translated = !(now.dates == before_.dates && now.writes == before_.writes);
        if (now.lockTimeout != before_.lockTimeout) {
            connection_.setLockTimeout(before_.lockTimeout);
        }
        now = std::move(before_);
        // Statements were made of them.
        if (translated) catalogue_.settingsChanged();
    }

private:
    SessionState& state_;
    FileConnection& connection_;
    SchemaCatalogue& catalogue_;
    SessionSettings before_;
};

}  // namespace kap::engine
