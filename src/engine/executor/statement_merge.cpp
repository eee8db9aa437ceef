#include <string_view>
#include <utility>

#include "engine/executor/plan_handlers.hpp"
#include "engine/executor/violations.hpp"
#include "engine/sqlite/time_limit.hpp"

// MERGE: finds the rows of all its actions, writes them, and tells OUTPUT and the triggers.
namespace kap::engine {

namespace {

// The tables of a MERGE, for as long as it runs. The transaction that ends with an error takes them
// with it.
class MergeTables {
public:
    MergeTables(sqlite3* database, const MergePlan& plan) : database_(database), plan_(plan) {
        for (const std::string& sql : plan.make) {
            PreparedStatement(database, sql).run();
        }
    }
    MergeTables(const MergeTables&) = delete;
    MergeTables& operator=(const MergeTables&) = delete;
    ~MergeTables() {
        const TimeLimit::Pause whole;
        for (const std::string& sql : plan_.remove) {
            sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr);
        }
    }

private:
    sqlite3* database_;
    const MergePlan& plan_;
};

constexpr const char* actionOf(std::uint8_t event) {
    return event == tsql::kOnInsert ? "INSERT" : event == tsql::kOnUpdate ? "UPDATE" : "DELETE";
}

// Writes the found rows; the answer is how many there were.
std::int64_t mergeRows(const MergePlan& plan, const StatementRun& run, bool captures) {
    ExecutionContext& context = run.context;
    std::int64_t count = 0;
    bool inserted = false;
    for (const MergeStep& step : plan.steps) {
        context.runText(run.plan.values, step.sql);
        const std::int64_t changes = context.connection.database().changes();
        count += changes;
        inserted = inserted || (step.event == tsql::kOnInsert && changes > 0);
        if (!captures) continue;
        checkThroughView(*plan.capture, run);
        context.runText(run.plan.values, step.keep);
        context.captures.empty(context.tableOf(plan.target.table));
    }
    context.noteIdentity(inserted);
    return count;
}

// The triggers of each kind of action see the rows of that kind, once all is written.
void fireMerged(const MergePlan& plan, const Table& table, StatementRun& run) {
    ExecutionContext& context = run.context;
    for (const std::uint8_t event : {tsql::kOnInsert, tsql::kOnUpdate, tsql::kOnDelete}) {
        std::vector<std::string> columns;
        bool taken = false;
        for (const MergeStep& step : plan.steps) {
            if (step.event != event) continue;
            taken = true;
            columns.insert(columns.end(), step.columns.begin(), step.columns.end());
        }
        if (!taken || !context.fires(table, event)) continue;
        for (const std::string& sql : plan.refill) {
            PreparedStatement refill(context.connection.handle(), sql);
            refill.bind(1, std::string_view(actionOf(event)));
            refill.run();
        }
        context.fire(table, {table.name, event, std::move(columns)}, run.results);
        context.captures.empty(table);
    }
}

// Finds the rows of every action, and tells how many there are.
std::int64_t findRows(const MergePlan& plan, const StatementRun& run) {
    ExecutionContext& context = run.context;
    Database& database = context.connection.database();
    std::int64_t count = 0;
    for (const std::string& sql : plan.find) {
        context.runText(run.plan.values, sql);
        count += database.changes();
    }
    if (!plan.limit.empty()) {
        context.runText(run.plan.values, plan.limit);
        count -= database.changes();
    }
    const bool repeated =
        !plan.repeated.empty() && PreparedStatement(database.handle(), plan.repeated).step();
    if (repeated) throw tsql::ServerError(tsql::Message::MergeTouchedRowTwice);
    return count;
}

// Triggers fire instead of the actions, each kind with the rows of its own.
void mergeInstead(const MergePlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    run.scope->expectSeveral();
    context.captures.ensureRows(plan.shape);
    const MergeTables tables(context.connection.handle(), plan);
    const std::int64_t count = findRows(plan, run);
    (void)context.counters.takeLastIdentity();
    for (const MergeFiring& firing : plan.firings) {
        for (const std::string& sql : firing.fill)
            context.runText(run.plan.values, sql);
        context.state.rowCount = count;
        context.fire(plan.shape, {plan.shape.name, firing.event, firing.columns, true},
                     run.results);
        context.captures.empty(plan.shape);
    }
    context.state.rowCount = count;
    context.addCount(run.results);
}

void merge(const MergePlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    sqlite3* database = context.connection.handle();
    // What its triggers do may change the catalogue.
    const Table table = context.tableOf(plan.target.table);
    const bool firing =
        plan.capture && plan.capture->forTriggers && context.fires(table, plan.capture->event);
    const bool answers = plan.capture && !plan.capture->outputSql.empty();
    const bool checked = plan.capture && !plan.capture->checks.empty();
    const bool captures = firing || answers || checked;
    if (captures) context.captures.ensure(table);
    const MergeTables tables(database, plan);
    (void)findRows(plan, run);
    std::int64_t count = 0;
    const auto write = [&] { count = mergeRows(plan, run, captures); };
    const auto explained = [&] {
        namingForeignKey(
            context.connection, context.catalogue,
            [&] {
                return WriteContext{nameOf(plan.verb), plan.target.table, {}};
            },
            write);
    };
    if (captures) {
        context.catching(table, explained);
    } else {
        explained();
    }
    if (answers) output(*plan.capture, run);
    context.state.rowCount = count;
    if (firing) fireMerged(plan, table, run);
    context.state.rowCount = count;
    if (!answers || plan.capture->outputInto) context.addCount(run.results);
}

}  // namespace

void execute(const MergePlan& plan, StatementRun& run) {
    refuseReadOnly(plan.target, run.context);
    if (!plan.firings.empty()) {
        mergeInstead(plan, run);
        return;
    }
    merge(plan, run);
    requireRow(plan.positioned, run.context);
}

}  // namespace kap::engine
