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
    runFunction(
        frame, [] {}, [] {});
    return frame.returned.value_or(Value());
}

GivenRows ScriptRunner::rowsOf(std::string_view function, std::vector<Value> arguments) {
    const auto module = catalogue_.findModule(StoredKind::Function, function);
    if (module == nullptr || module->definition.returnTable == nullptr) {
        throw tsql::ServerError(tsql::Message::InvalidObject, {function});
    }
    const tsql::CreateTableStatement& table = *module->definition.returnTable;
    const std::shared_ptr<Program> program = programOf(module);
    Frame frame(*program);
    for (std::size_t i = 0; i < arguments.size() && i < frame.values.size(); ++i) {
        frame.values[i] = std::move(arguments[i]);
    }
    GivenRows rows;
    runFunction(
        frame, [&] { declareTable(frame, table); },
        [&] { rows = rowsOfVariable(frame, table.table.last()); });
    return rows;
}

GivenRows ScriptRunner::rowsOfVariable(const Frame& frame, const std::string& name) {
    const Table& table = *frame.program.names().localTable(name);
    std::string columns;
    for (const Column& column : table.columns)
        columns += (columns.empty() ? "" : ", ") + sqlName(column.name);
    PreparedStatement look(connection_.handle(), "SELECT " + columns + " FROM temp." +
                                                     sqlName(table.name) + " ORDER BY rowid");
    GivenRows rows;
    while (look.step()) {
        std::vector<Value>& row = rows.emplace_back();
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            row.push_back(valueOf(look, static_cast<int>(i), table.columns[i].type));
    }
    return rows;
}

// A function tells of nothing but its value.
void ScriptRunner::runFunction(Frame& frame, const std::function<void()>& before,
                               const std::function<void()>& behind) {
    const Transactions::CallScope call(transactions_);
    const Restored error(state_.error);
    const Restored rowCount(state_.rowCount);
    std::vector<ado::ServerMessage> messages;
    const Restored reported(messages_);
    messages_ = &messages;
    // Its errors are those of the statement that calls it.
    const Restored tries(state_.openTries);
    ++state_.openTries;
    std::vector<ado::Result> ignored;
    try {
        runFrame(frame, ignored, before, behind);
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
}

void ScriptRunner::fire(const Table& table, const FiringTrigger& trigger,
                        std::vector<ado::Result>& results) {
    std::vector<SchemaCatalogue::Firing>& firing = catalogue_.firing();
    const auto fired = catalogue_.firedBy(table.name, trigger.event, trigger.insteadOf);
    firing.push_back({table.name, {}});
    const Restored identity(state_.frames.empty() ? state_.identity : state_.frame().scopeIdentity);
    const Restored rowCount(state_.rowCount);
    try {
        for (const auto& module : fired) {
            firing.back().trigger = module->object.name;
            const std::shared_ptr<Program> program = programOf(module, table.captureLevel);
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
        firing.pop_back();
        throw;
    }
    firing.pop_back();
}

}  // namespace kap::engine
