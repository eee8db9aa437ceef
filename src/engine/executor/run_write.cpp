#include <algorithm>
#include <utility>

#include "engine/executor/column_info.hpp"
#include "engine/executor/plan_handlers.hpp"
#include "engine/executor/row_reader.hpp"
#include "engine/executor/violations.hpp"
#include "tsql/server_error.hpp"

// INSERT, UPDATE and DELETE.
namespace kap::engine {

void refuseReadOnly(const WriteTarget& target, const EngineContext& context) {
    for (const LocalTable& local : context.state.frame().program.names().localTables()) {
        if (!local.readOnly || local.table.name != target.table) continue;
        throw tsql::ServerError(tsql::Message::TableParameterIsReadOnly, {local.name});
    }
}

void requireRow(bool positioned, const EngineContext& context) {
    if (positioned && context.state.rowCount == 0) {
        throw tsql::ServerError(tsql::Message::NoRowsTouched);
    }
}

void output(const Capture& capture, StatementRun& run) {
    PreparedStatement rows(run.context.connection.handle(), capture.outputSql);
    run.context.bind(run.plan.values, rows);
    if (capture.outputInto) {
        rows.run();
        return;
    }
    ado::Result result;
    result.columns = columnInfos(capture.columns, run.context.catalogue);
    result.rows.resize(result.columns.size());
    const RowReader reader(result.columns);
    while (rows.step()) {
        reader.read(rows, result.rows);
    }
    run.results.push_back(std::move(result));
}

// WITH CHECK OPTION: a row must not leave the view through which it is written.
void checkThroughView(const Capture& capture, const StatementRun& run) {
    for (const std::string& sql : capture.checks) {
        PreparedStatement hidden(run.context.connection.handle(), sql);
        run.context.bind(run.plan.values, hidden);
        if (!hidden.step()) continue;
        throw tsql::ServerError(tsql::Message::CheckOptionViolated);
    }
}

namespace {

// Whether an UPDATE ended at a key that it may not yet have looked at; what it has left in
// variables cannot be taken back.
bool canGoInSteps(const SqliteError& error, const tsql::Statement& statement, const Table& table) {
    const auto* update = std::get_if<tsql::UpdateStatement>(&statement.node);
    const bool key =
        error.code() == SQLITE_CONSTRAINT_UNIQUE || error.code() == SQLITE_CONSTRAINT_PRIMARYKEY;
    return key && update != nullptr &&
           std::ranges::all_of(
               update->assignments,
               [](const tsql::Assignment& each) { return each.variable.empty(); }) &&
           std::ranges::none_of(table.columns, &Column::computed);
}

// Writes the rows; the answer is how many.
std::int64_t writeRows(const WritePlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    bool inSteps = false;
    const auto write = [&] {
        if (inSteps) {
            const tsql::Statement& own = context.exact(run.compiled, run.statement);
            updateInSteps(std::get<tsql::UpdateStatement>(own.node), context);
            return;
        }
        PreparedStatement& text = context.prepared(run.compiled.prepared, plan.sql);
        context.bind(run.plan.values.variables, run.compiled.constants, text);
        text.run();
    };
    const auto explained = [&] {
        namingForeignKey(
            context.connection, context.catalogue,
            [&] {
                return WriteContext{nameOf(plan.verb), plan.target.table, {}, plan.columns};
            },
            write);
    };
    try {
        explained();
    } catch (const SqliteError& error) {
        if (!canGoInSteps(error, run.statement, context.tableOf(plan.target.table))) throw;
        inSteps = true;
        explained();
    }
    const std::int64_t count = context.connection.database().changes();
    if (plan.ignoresDuplicates) {
        context.state.duplicatesIgnored = context.state.offeredRows > count;
    }
    return count;
}

void writePlainly(const WritePlan& plan, StatementRun& run) {
    run.context.state.rowCount = writeRows(plan, run);
    run.context.noteIdentity(plan.verb == Verb::Insert);
    run.context.addCount(run.results);
}

void writeCaught(const WritePlan& plan, const Capture& capture, StatementRun& run) {
    ExecutionContext& context = run.context;
    // What its triggers do may change the catalogue.
    const Table table = context.tableOf(plan.target.table);
    const bool firing = capture.forTriggers && context.fires(table, capture.event);
    const bool answers = !capture.outputSql.empty();
    if (!firing && !answers && capture.checks.empty()) {
        writePlainly(plan, run);
        return;
    }
    context.captures.ensure(table);
    std::int64_t count = 0;
    context.catching(table, [&] { count = writeRows(plan, run); });
    context.noteIdentity(plan.verb == Verb::Insert);
    checkThroughView(capture, run);
    if (answers) output(capture, run);
    context.state.rowCount = count;
    if (firing) context.fire(table, {table.name, capture.event, plan.columns}, run.results);
    context.captures.empty(table);
    context.state.rowCount = count;
    if (!answers || capture.outputInto) context.addCount(run.results);
}

}  // namespace

void execute(const WritePlan& plan, StatementRun& run) {
    refuseReadOnly(plan.target, run.context);
    if (plan.capture) {
        run.scope->expectSeveral();
        writeCaught(plan, *plan.capture, run);
    } else {
        writePlainly(plan, run);
    }
    requireRow(plan.positioned, run.context);
}

}  // namespace kap::engine
