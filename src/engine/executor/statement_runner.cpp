#include "engine/executor/statement_runner.hpp"

#include <algorithm>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "engine/executor/column_info.hpp"
#include "engine/executor/plan_handlers.hpp"
#include "engine/plan/translator.hpp"

namespace kap::engine {
namespace {

bool isOneRow(const tsql::Statement& statement) {
    const auto* insert = std::get_if<tsql::InsertStatement>(&statement.node);
    return insert != nullptr && insert->query == nullptr && insert->rows.size() <= 1;
}

// Whether a plan is right while these triggers are running: what a statement writes depends on
// them.
bool fitsFiring(const StatementPlan& plan, const SchemaCatalogue& catalogue) {
    return std::visit(
        [&]<typename Plan>(const Plan& kind) {
            if constexpr (requires { kind.target; }) {
                bool instead = std::is_same_v<Plan, InsteadPlan>;
                if constexpr (std::is_same_v<Plan, MergePlan>) instead = !kind.firings.empty();
                const WriteTarget& target = kind.target;
                if (target.insteadOfEvent != 0 &&
                    instead != catalogue.firesInstead(target.relation, target.insteadOfEvent)) {
                    return false;
                }
                bool catches = true;
                if constexpr (std::is_same_v<Plan, WritePlan>) catches = kind.capture.has_value();
                return !catches || target.temporary ||
                       target.firingLevel == catalogue.firingLevel(target.table);
            } else {
                return true;
            }
        },
        plan.kind);
}

}  // namespace

void StatementRunner::run(CompiledStatement& compiled, const tsql::Statement& statement,
                          std::vector<ado::Result>& results) {
    context_.connection.errorSlot().error.reset();
    if (isPlainQuery(statement)) {
        read(compiled, statement, results);
    } else {
        write(compiled, statement, results);
    }
}

// --- Preparing

bool StatementRunner::isCurrent(const CompiledStatement& compiled) const {
    return compiled.ready && compiled.generation == context_.catalogue.generation() &&
           !compiled.plan->values.ofTheMoment && fitsFiring(*compiled.plan, context_.catalogue);
}

bool StatementRunner::isCurrent(const CompiledValue& compiled) const {
    return compiled.ready && compiled.generation == context_.catalogue.generation() &&
           !compiled.plan->values.ofTheMoment;
}

void StatementRunner::use(CompiledStatement& compiled, StatementPlan plan) {
    compiled.ready = false;
    compiled.prepared.reset();
    compiled.columns.reset();
    if (const auto* query = std::get_if<QueryPlan>(&plan.kind)) {
        compiled.columns = std::make_shared<const std::vector<ado::ColumnInfo>>(
            columnInfos(query->columns, context_.catalogue));
    }
    compiled.constants = plan.values.constants;
    compiled.plan = std::make_shared<const StatementPlan>(std::move(plan));
    compiled.generation = context_.catalogue.generation();
    compiled.ready = true;
}

void StatementRunner::use(CompiledValue& compiled, ValuePlan plan) {
    compiled.ready = false;
    compiled.prepared.reset();
    compiled.plan = std::make_shared<const ValuePlan>(std::move(plan));
    compiled.generation = context_.catalogue.generation();
    compiled.ready = true;
}

void StatementRunner::translate(CompiledStatement& compiled, const tsql::Statement& statement,
                                const NameScope& names) {
    use(compiled, engine::translate(statement, names, Constants::Bound));
}

void StatementRunner::ensureCurrent(CompiledStatement& compiled, const tsql::Statement& statement) {
    if (isCurrent(compiled)) return;
    translate(compiled, context_.exact(compiled, statement),
              context_.state.frame().program.names());
}

// What triggers do may have the statement compiled anew while it runs.
void StatementRunner::runPlan(CompiledStatement& compiled, const tsql::Statement& statement,
                              std::vector<ado::Result>& results, Transactions::WriteScope* scope) {
    const std::shared_ptr<const StatementPlan> plan = compiled.plan;
    StatementRun run{context_, compiled, *plan, statement, results, scope};
    std::visit([&](const auto& kind) { execute(kind, run); }, plan->kind);
}

// --- Reading

Value StatementRunner::firstValue(CompiledValue& compiled) {
    const ValuePlan& plan = *compiled.plan;
    if (plan.constant) return *plan.constant;
    context_.connection.errorSlot().error.reset();
    PreparedStatement& statement = context_.prepared(compiled.prepared, plan.sql);
    context_.bind(plan.values, statement);
    const ResetGuard guard(statement);
    if (!statement.step()) return std::monostate{};
    return valueOf(statement, 0, plan.type);
}

void StatementRunner::read(CompiledStatement& compiled, const tsql::Statement& statement,
                           std::vector<ado::Result>& results) {
    if (!needsScope(compiled) && tryReading(compiled, results)) return;
    {
        const Transactions::ReadScope scope(context_.transactions);
        ensureCurrent(compiled, statement);
        if (!compiled.plan->values.drawsNumbers) {
            runPlan(compiled, statement, results, nullptr);
            return;
        }
    }
    std::vector<ado::Result> drawn;
    drawing([&] {
        ensureCurrent(compiled, statement);
        runPlan(compiled, statement, drawn, nullptr);
    });
    std::ranges::move(drawn, std::back_inserter(results));
}

// Without looking at the schema first: that it has changed shows when the statement is run, because
// SQLite then has to prepare it anew or cannot. False when it has to be translated again.
bool StatementRunner::tryReading(CompiledStatement& compiled, std::vector<ado::Result>& results) {
    const StatementPlan& plan = *compiled.plan;
    try {
        if (const auto* assignment = std::get_if<AssignmentPlan>(&plan.kind)) {
            if (assign(*assignment, context_, compiled, SchemaCheck::Needed)) return true;
        } else if (const auto* query = std::get_if<QueryPlan>(&plan.kind)) {
            ado::Result result;
            if (fill(*query, context_, compiled, result, SchemaCheck::Needed)) {
                results.push_back(std::move(result));
                return true;
            }
        }
    } catch (const SqliteError& error) {
        if (error.primaryCode() != SQLITE_ERROR || context_.connection.errorSlot().error) {
            throw;
        }
    }
    compiled.ready = false;
    return false;
}

// --- Writing

void StatementRunner::write(CompiledStatement& compiled, const tsql::Statement& statement,
                            std::vector<ado::Result>& results) {
    context_.requireHealthy();
    Transactions::WriteScope scope(context_.transactions, isOneRow(statement)
                                                              ? Transactions::Writes::OneRow
                                                              : Transactions::Writes::Several);
    context_.captures.removeStale();
    ensureCurrent(compiled, statement);
    context_.state.offeredRows = 0;
    context_.state.rankedNumbers.clear();
    runPlan(compiled, statement, results, &scope);
    scope.keep();
}

}  // namespace kap::engine
