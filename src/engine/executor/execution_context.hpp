#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/restored.hpp"
#include "data/driver.hpp"
#include "engine/executor/captured_tables.hpp"
#include "engine/executor/engine_context.hpp"
#include "engine/executor/program.hpp"
#include "engine/sqlite/statement_pool.hpp"

namespace kap::engine {

// Who runs the triggers of a table.
class TriggerHost {
public:
    TriggerHost() = default;
    TriggerHost(const TriggerHost&) = delete;
    TriggerHost& operator=(const TriggerHost&) = delete;
    virtual ~TriggerHost() = default;
    // The rows are in the tables that catch them; what answers the triggers give goes to `results`.
    virtual void fire(const Table& table, const FiringTrigger& trigger,
                      std::vector<ado::Result>& results) = 0;
    // What is noted of the session with a global temporary table that it makes.
    virtual std::string ownerOfGlobalTables() = 0;
};

// What those who run plans have in common, beside the engine's parts: prepared statements, the
// tables that catch written rows, and the triggers.
struct ExecutionContext : EngineContext {
    ExecutionContext(const EngineContext& engine, TriggerHost& host);
    ExecutionContext(const ExecutionContext&) = delete;
    ExecutionContext& operator=(const ExecutionContext&) = delete;

    // A plan's only text, prepared.
    [[nodiscard]] PreparedStatement& prepared(std::shared_ptr<PreparedStatement>& kept,
                                              const std::string& sql);
    // Gives a text its values. One text of several may hold fewer of them than all together.
    void bind(const std::vector<int>& variables, const std::vector<Value>& constants,
              PreparedStatement& statement) const;
    void bind(const BoundValues& values, PreparedStatement& statement) const {
        bind(values.variables, values.constants, statement);
    }
    void runText(const BoundValues& values, const std::string& sql) const;

    // A table of the file, or one of the program's own, by its stored name.
    [[nodiscard]] const Table& tableOf(std::string_view name) const;
    // The syntax tree of a statement. One that was recognised by its shape has that of another
    // statement, which differs in literals; its own is made of its text.
    [[nodiscard]] const tsql::Statement& exact(CompiledStatement& compiled,
                                               const tsql::Statement& statement) const;

    // The identity that a statement has given out last is the session's, if it was an INSERT.
    void noteIdentity(bool inserts);
    // Tells how many rows were written, unless that is switched off.
    void addCount(std::vector<ado::Result>& results) const;
    // Error 3930 in a transaction that allows no more than rolling back.
    void requireHealthy() const;

    [[nodiscard]] bool fires(const Table& table, std::uint8_t event) const;
    void fire(const Table& table, const FiringTrigger& trigger, std::vector<ado::Result>& results);
    // Catches the rows that `work` writes to a table.
    template <typename Work>
    void catching(const Table& table, const Work& work) {
        const Restored before(state.capturing);
        state.capturing = captureKey(table);
        work();
    }
    // Catches the rows that `work` writes to a table, for its triggers, which are then fired.
    // Within a writing transaction.
    template <typename Work>
    void withTriggers(const Table& table, const FiringTrigger& trigger, const Work& work) {
        captures.ensure(table);
        catching(table, work);
        std::vector<ado::Result> ignored;
        fire(table, trigger, ignored);
        captures.empty(table);
    }

    TriggerHost& triggers;
    StatementPool pool;
    CapturedTables captures;
};

// A value of a row, in the storage form of a type.
[[nodiscard]] Value valueOf(const PreparedStatement& row, int column, const tsql::TypeSpec& type);

}  // namespace kap::engine
