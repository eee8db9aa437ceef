#include <utility>

#include "engine/plan/capture.hpp"
#include "engine/script/running.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/script/settings_scope.hpp"

// Stored functions and triggers: programs that other statements run.
namespace kap::engine {

// Called by SQLite in the middle of a statement; what goes wrong ends that statement.
Value ScriptRunner::call(std::string_view function, std::vector<Value> arguments) {
    const auto module = catalogue_.findModule(StoredKind::Function, function);
    if (module == nullptr) {
        throw tsql::ServerError(tsql::Message::InvalidObject, {function});
    }
    const std::shared_ptr<Program> program = programOf(module);
    Frame frame(*program);
    for (std::size_t i = 0; i < arguments.size() && i < frame.values.size(); ++i) {
        frame.values[i] = std::move(arguments[i]);
    }
    // A function tells of nothing but its value.
    const Restored error(state_.error);
    const Restored rowCount(state_.rowCount);
    std::vector<ado::ServerMessage> messages;
    const Restored before(messages_);
    messages_ = &messages;
    // Its errors are those of the statement that calls it.
    const Restored tries(state_.openTries);
    ++state_.openTries;
    std::vector<ado::Result> ignored;
    try {
        runFrame(frame, ignored);
    } catch (const RaisedError& raised) {
        throw raised.error.at(0);
    } catch (const ScopeEnded&) {
        throw tsql::ServerError(messages.back().nativeNumber, messages.back().text);
    } catch (const BatchEnded& ended) {
        if (ended.interrupted || messages.empty()) {
            throw SqliteError(SQLITE_INTERRUPT, "interrupted", 0);
        }
        throw tsql::ServerError(messages.back().nativeNumber, messages.back().text);
    }
    return frame.returned.value_or(Value());
}

void ScriptRunner::fire(const Table& table, const FiringTrigger& trigger,
                        std::vector<ado::Result>& results) {
    state_.firing.push_back(table.name);
    const Restored identity(state_.frames.empty() ? state_.identity : state_.frame().scopeIdentity);
    const Restored rowCount(state_.rowCount);
    try {
        for (const auto& module : catalogue_.triggersOf(table.name)) {
            if ((module->definition.events & trigger.event) == 0) continue;
            const std::shared_ptr<Program> program = programOf(module);
            if (program->names().localTables().empty()) {
                program->names().addLocalTable(
                    {"inserted", capturedRows(table, RowState::Inserted)});
                program->names().addLocalTable({"deleted", capturedRows(table, RowState::Deleted)});
            }
            Frame frame(*program);
            frame.trigger = trigger;
            const SettingsScope settings(state_, connection_, catalogue_);
            // A trigger and what it was fired by happen together or not at all, unless it says
            // otherwise.
            state_.abortOnError = true;
            runFrame(frame, results);
        }
    } catch (...) {
        state_.firing.pop_back();
        throw;
    }
    state_.firing.pop_back();
}

}  // namespace kap::engine
