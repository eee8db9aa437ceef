#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/restored.hpp"
#include "data/driver.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/executor/captured_tables.hpp"
#include "engine/executor/session_state.hpp"
#include "engine/executor/transactions.hpp"
#include "engine/sqlite/file_connection.hpp"
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
};

// Runs single statements that have SQL of their own: translates and prepares them when that is
// needed, binds the variables, and keeps what SQLite does within the statement's transaction.
//
// Raises ServerError and SqliteError. What changes the schema is in statement_definitions.cpp.
class StatementRunner {
public:
    StatementRunner(FileConnection& connection, SchemaCatalogue& catalogue, Counters& counters,
                    Transactions& transactions, SessionState& state, TriggerHost& triggers);

    // Runs a statement and appends what it answers.
    void run(CompiledStatement& prepared, const tsql::Statement& statement,
             std::vector<ado::Result>& results);
    // The rows of a cursor's query. Behind its columns are the numbers of the rows of those tables
    // that `rowTables` of its translation names.
    void openCursor(CompiledStatement& prepared, const tsql::Statement& query, ado::Result& result);
    // The value of an expression, of the type that its translation says.
    template <typename Make>
    [[nodiscard]] Value value(CompiledStatement& prepared, const Make& make) {
        if (!needsScope(prepared)) return firstValue(prepared);
        {
            const Transactions::ReadScope scope(transactions_);
            if (!isCurrent(prepared)) {
                use(prepared, make());
            }
            if (!prepared.translation->drawsNumbers) return firstValue(prepared);
        }
        Value result;
        drawing([&] {
            if (!isCurrent(prepared)) use(prepared, make());
            result = firstValue(prepared);
        });
        return result;
    }
    // Translates a statement ahead of its run, so that what is wrong with it shows early.
    void translate(CompiledStatement& prepared, const tsql::Statement& statement,
                   const NameScope& names);

    // Catches the rows that `work` writes to a table, for its triggers, which are then fired.
    // Within a writing transaction.
    template <typename Work>
    void withTriggers(const Table& table, const FiringTrigger& trigger, const Work& work) {
        captures_.ensure(table);
        catching(table, work);
        std::vector<ado::Result> ignored;
        fire(table, trigger, ignored);
        captures_.empty(table);
    }
    [[nodiscard]] bool fires(const Table& table, std::uint8_t event) const;
    [[nodiscard]] CapturedTables& captures() noexcept { return captures_; }

private:
    [[nodiscard]] bool isCurrent(const CompiledStatement& prepared) const;
    [[nodiscard]] bool fitsFiring(const Translation& made) const;
    // Whether it can be read only in a scope, which first ends a transaction that nobody owns.
    [[nodiscard]] bool needsScope(const CompiledStatement& prepared) const;
    void use(CompiledStatement& prepared, Translation translation);
    void ensureCurrent(CompiledStatement& prepared, const tsql::Statement& statement);
    void prepareAll(CompiledStatement& prepared);
    [[nodiscard]] const tsql::Statement& exact(CompiledStatement& prepared,
                                               const tsql::Statement& statement);
    void bind(const Translation& made, const std::vector<Value>& constants,
              PreparedStatement& statement) const;
    void bind(const Translation& made, PreparedStatement& statement) const {
        bind(made, made.constants, statement);
    }
    void bind(const CompiledStatement& prepared, PreparedStatement& statement) const {
        bind(*prepared.translation, prepared.constants, statement);
    }
    [[nodiscard]] Value firstValue(CompiledStatement& prepared);
    void drawing(const std::function<void()>& read);
    void requireHealthy() const;

    void select(CompiledStatement& prepared, const tsql::Statement& statement,
                std::vector<ado::Result>& results);
    [[nodiscard]] bool trySelect(CompiledStatement& prepared, ado::Result& result);
    enum class SchemaCheck : std::uint8_t { Needed, NotNeeded };
    // False when the schema turns out to have changed; no row has been taken then.
    [[nodiscard]] bool fill(CompiledStatement& prepared, ado::Result& result, SchemaCheck check);
    [[nodiscard]] bool assign(CompiledStatement& prepared, SchemaCheck check);
    void write(CompiledStatement& prepared, const tsql::Statement& statement,
               std::vector<ado::Result>& results);
    void writeCaught(CompiledStatement& prepared, const tsql::Statement& statement,
                     std::vector<ado::Result>& results);
    // Error 10700 for a table that the program was given.
    void refuseReadOnly(const Translation& made) const;
    void runAll(CompiledStatement& prepared, const tsql::Statement& statement);
    void updateInSteps(const tsql::Statement& statement);
    void checkThroughView(const Translation& made);
    // statement_triggers.cpp
    void writeInstead(const Translation& made, std::vector<ado::Result>& results);
    void fire(const Table& table, const FiringTrigger& trigger, std::vector<ado::Result>& results);
    // statement_merge.cpp
    void merge(const Translation& made, std::vector<ado::Result>& results);
    [[nodiscard]] std::int64_t mergeRows(const Translation& made, bool captures);
    void fireMerged(const MergePlan& plan, const Table& table, std::vector<ado::Result>& results);
    void runText(const Translation& made, const std::string& sql);
    void output(const Translation& made, std::vector<ado::Result>& results);
    void noteIdentity(StatementKind kind);
    void addCount(std::vector<ado::Result>& results);

    template <typename Work>
    void catching(const Table& table, const Work& work) {
        const Restored before(state_.capturing);
        state_.capturing = captureKey(table);
        work();
    }
    [[nodiscard]] const Table& tableOf(const Translation& translation) const;

    void define(CompiledStatement& prepared, const tsql::Statement& statement,
                std::vector<ado::Result>& results);
    void runDefinition(const Translation& made, const tsql::Statement& statement);
    void checkNewIndex(const Translation& made, const std::string& name) const;
    void checkReferences(const Translation& translation, const tsql::Statement& statement) const;
    void checkIndexes(const Translation& translation) const;
    void refuseKeyIndex(const Translation& translation, const DroppedIndex& index) const;
    void refuseServingIndex(const Translation& translation, const DroppedIndex& index) const;
    void noteTables(const Translation& translation);
    void continueIdentity(const Table& table);

    FileConnection& connection_;
    SchemaCatalogue& catalogue_;
    Counters& counters_;
    Transactions& transactions_;
    SessionState& state_;
    TriggerHost& triggers_;
    StatementPool pool_;
    CapturedTables captures_;
};

// A value of a row, in the storage form of a type.
[[nodiscard]] Value valueOf(const PreparedStatement& row, int column, const tsql::TypeSpec& type);

}  // namespace kap::engine
