#pragma once

#include <functional>
#include <vector>

#include "engine/executor/execution_context.hpp"

namespace kap::engine {

// Runs single statements that have plans: makes and prepares these when that is needed, opens what
// the statement reads and writes in, and has its plan run by the handler of its kind
// (plan_handlers.hpp).
//
// Raises ServerError and SqliteError.
class StatementRunner {
public:
    explicit StatementRunner(ExecutionContext& context) : context_(context) {}

    // Runs a statement and appends what it answers.
    void run(CompiledStatement& compiled, const tsql::Statement& statement,
             std::vector<ado::Result>& results);
    // The rows of a cursor's query. Behind its columns are the numbers of the rows of those tables
    // that `rowTables` of its plan names.
    void openCursor(CompiledStatement& compiled, const tsql::Statement& query, ado::Result& result);
    // The value of an expression, of the type that its plan says.
    template <typename Make>
    [[nodiscard]] Value value(CompiledValue& compiled, const Make& make) {
        if (!needsScope(compiled)) return firstValue(compiled);
        {
            const Transactions::ReadScope scope(context_.transactions);
            if (!isCurrent(compiled)) use(compiled, make());
            if (!compiled.plan->values.drawsNumbers) return firstValue(compiled);
        }
        Value result;
        drawing([&] {
            if (!isCurrent(compiled)) use(compiled, make());
            result = firstValue(compiled);
        });
        return result;
    }
    // Makes the plan of a statement ahead of its run, so that what is wrong with it shows early.
    void translate(CompiledStatement& compiled, const tsql::Statement& statement,
                   const NameScope& names);

private:
    [[nodiscard]] bool isCurrent(const CompiledStatement& compiled) const;
    [[nodiscard]] bool isCurrent(const CompiledValue& compiled) const;
    // Whether it can be read only in a scope, which first ends a transaction that nobody owns.
    template <typename Compiled>
    [[nodiscard]] bool needsScope(const Compiled& compiled) const {
        return !isCurrent(compiled) || compiled.plan->values.readsSchema ||
               compiled.plan->values.drawsNumbers || !context_.transactions.isSettled();
    }
    void use(CompiledStatement& compiled, StatementPlan plan);
    void use(CompiledValue& compiled, ValuePlan plan);
    void ensureCurrent(CompiledStatement& compiled, const tsql::Statement& statement);
    [[nodiscard]] Value firstValue(CompiledValue& compiled);
    void drawing(const std::function<void()>& read);

    void read(CompiledStatement& compiled, const tsql::Statement& statement,
              std::vector<ado::Result>& results);
    [[nodiscard]] bool tryReading(CompiledStatement& compiled, std::vector<ado::Result>& results);
    void write(CompiledStatement& compiled, const tsql::Statement& statement,
               std::vector<ado::Result>& results);
    void runPlan(CompiledStatement& compiled, const tsql::Statement& statement,
                 std::vector<ado::Result>& results, Transactions::WriteScope* scope);

    ExecutionContext& context_;
};

}  // namespace kap::engine
