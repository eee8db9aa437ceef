#pragma once

#include <chrono>
#include <new>
#include <string>
#include <vector>

#include "engine/script/script_runner.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "engine/sqlite/time_limit.hpp"

namespace kap::engine {

class ScriptRunner::Running {
public:
    Running(ScriptRunner& runner, Frame& frame) : runner_(runner), frame_(frame) {
        runner_.state_.frames.push_back(&frame_);
        frame_.program.running = true;
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() {
        const TimeLimit::Pause whole;
        runner_.state_.openTries -= static_cast<int>(frame_.handlers.size());
        for (const VariableTable& table : frame_.localTables) {
            dropTable(table.name);
        }
        if (!frame_.keepsTables) {
            for (const std::string& table : frame_.ownTables) {
                dropTable(table);
            }
        }
        runner_.state_.frames.pop_back();
        frame_.program.running = false;
    }

private:
    // The transaction in which it was made may have taken the table with it.
    void dropTable(const std::string& table) noexcept {
        try {
            const std::string sql =
                sqlOf(sql::Drop{sql::SchemaObject::Table, sql::Database::Temporary, table, true});
            sqlite3_exec(runner_.connection_.handle(), sql.c_str(), nullptr, nullptr, nullptr);
        } catch (const std::bad_alloc&) {
            // It stays until the connection ends: no other table has its name.
        }
        runner_.execution_.captures.dropped(table);
        // Nobody else has seen a table variable.
        if (!table.starts_with('@')) runner_.catalogue_.invalidate();
    }

    ScriptRunner& runner_;
    Frame& frame_;
};

template <typename Work>
void ScriptRunner::asRequest(std::chrono::seconds timeout,
                             std::vector<ado::ServerMessage>& messages, const Work& work) {
    const Restored before(messages_);
    messages_ = &messages;
    connection_.forgetCancel();
    const TimeLimit limit(connection_.handle(), timeout, &connection_.cancelled());
    const DateSettingsScope dates(state_.dates);
    bool interrupted = false;
    try {
        work();
        if (!connection_.isSound()) report(databaseFileChanged());
    } catch (const BatchEnded& ended) {
        interrupted = ended.interrupted;
    } catch (const ScopeEnded&) {
    } catch (const RaisedError& raised) {
        report(raised);
    } catch (const SqliteError& error) {
        if (error.primaryCode() != SQLITE_INTERRUPT) throw;
        interrupted = true;
    } catch (const std::bad_alloc&) {
        rollBackWithoutMemory();
        throw;
    }
    if (interrupted || limit.passed()) {
        messages.push_back(interruption());
        if (state_.abortOnError) rollBackAll();
    }
    finishRequest(messages);
}

}  // namespace kap::engine
