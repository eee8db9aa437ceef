#include <algorithm>

#include "engine/catalog/global_tables.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/executor/plan_handlers.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/table_builder.hpp"

// The statements that change the schema: making, filling, dropping and emptying tables.
namespace kap::engine {
namespace {

// Each text is prepared only when the one before it has changed the schema.
void runInOrder(const std::vector<std::string>& sql, const EngineContext& context) {
    for (const std::string& each : sql)
        PreparedStatement(context.connection.handle(), each).run();
}

// The schema is another one now, and a definition is planned anew each time.
void finishDefinition(StatementRun& run) {
    run.compiled.ready = false;
    run.context.catalogue.invalidate();
}

// Temporary tables end with the procedure that made them, global ones with the session.
void noteCreated(const Table& table, ExecutionContext& context) {
    if (table.temporary) context.state.frame().ownTables.push_back(table.name);
    if (!isGlobalTable(table.name)) return;
    StoredObject note;
    note.kind = StoredKind::GlobalTable;
    note.name = table.name;
    note.parent = table.name;
    note.text = context.triggers.ownerOfGlobalTables();
    context.catalogue.stored().put(note);
}

// Unless it has dropped them before.
void noteDropped(const DroppedTable& table, SessionState& state) {
    for (Frame* frame : state.frames)
        std::erase(frame->ownTables, table.name);
}

// A table that was filled with the identities of another one goes on from the farthest.
void continueIdentity(const Table& table, const EngineContext& context) {
    for (const Column& column : table.columns) {
        if (!column.identity) continue;
        PreparedStatement look(context.connection.handle(),
                               std::string("SELECT ") +
                                   (column.identity->increment > 0 ? "max(" : "min(") +
                                   sqlName(column.name) + ") FROM " +
                                   (table.temporary ? "temp." : "main.") + sqlName(table.name));
        if (look.step() && !look.isNull(0)) {
            const std::int64_t farthest = look.integer(0);
            look.reset();
            context.counters.noteIdentity(table.name, farthest);
            (void)context.counters.takeLastIdentity();
        }
    }
}

}  // namespace

void execute(const CreateTablePlan& plan, StatementRun& run) {
    runInOrder(plan.sql, run.context);
    run.context.counters.add(plan.created);
    run.context.state.rowCount = 0;
    noteCreated(plan.created.table, run.context);
    run.compiled.ready = false;
    run.context.catalogue.added(plan.created.table);
}

void execute(const SelectIntoPlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    const Table& table = plan.table.created.table;
    runInOrder(plan.table.sql, context);
    context.counters.add(plan.table.created);
    context.runText(run.plan.values, plan.fill);
    context.state.rowCount = context.connection.database().changes();
    continueIdentity(table, context);
    context.addCount(run.results);
    noteCreated(table, context);
    finishDefinition(run);
}

// --- Indexes

namespace {

tsql::ServerError indexExists(const std::string& name, const std::string& table) {
    return {tsql::Message::IndexExists, {name, bareName(table)}};
}

void checkNewIndex(const CreateIndexPlan& plan, const ExecutionContext& context) {
    if (plan.temporary) {
        PreparedStatement look(context.connection.handle(),
                               "SELECT 1 FROM temp.sqlite_schema WHERE type = 'index' AND name = "
                               "?1 COLLATE NOCASE");
        const std::string stored = indexName(context.tableOf(plan.table), plan.index);
        look.bind(1, std::string_view(stored));
        if (look.step()) throw indexExists(plan.index, plan.table);
        return;
    }
    for (const IndexInfo& known : context.catalogue.keysAndIndexes()) {
        if (!sameName(known.table, plan.table) || !sameName(known.name, plan.index)) continue;
        throw indexExists(plan.index, plan.table);
    }
}

// The index of a key goes with its constraint.
void refuseKeyIndex(const DroppedIndex& index, const ExecutionContext& context) {
    if (index.temporary) return;
    for (const ConstraintInfo& key : context.catalogue.constraints()) {
        const std::string_view type = key.type;
        const bool serves = (type == "PK" || type == "UQ") && sameName(key.table, index.table) &&
                            sameName(indexName(context.tableOf(index.table), key.name), index.name);
        if (!serves) continue;
        throw tsql::ServerError(tsql::Message::IndexServesConstraint,
                                {index.shown, type == "PK" ? "PRIMARY" : "UNIQUE"});
    }
}

// A unique index may be what a foreign key refers to.
void refuseServingIndex(const DroppedIndex& index, const ExecutionContext& context) {
    if (index.temporary) return;
    const Table& table = context.tableOf(index.table);
    for (const IndexInfo& each : context.catalogue.indexes()) {
        const bool dropped =
            sameName(each.table, table.name) && sameName(indexName(table, each.name), index.name);
        if (!dropped || !each.unique || !context.catalogue.servedBy(table, each.columns)) continue;
        throw tsql::ServerError(tsql::Message::IndexServesConstraint, {index.shown, "FOREIGN"})
            .withState(6);
    }
}

void checkDroppedIndex(const DroppedIndex& index, const ExecutionContext& context) {
    refuseKeyIndex(index, context);
    refuseServingIndex(index, context);
    PreparedStatement look(context.connection.handle(),
                           std::string("SELECT 1 FROM ") + (index.temporary ? "temp" : "main") +
                               ".sqlite_schema WHERE type = 'index' AND name = ?1 COLLATE "
                               "NOCASE");
    look.bind(1, std::string_view(index.name));
    if (look.step()) return;
    throw tsql::ServerError(tsql::Message::CannotDrop, {"index", index.shown}).withState(6);
}

}  // namespace

void execute(const CreateIndexPlan& plan, StatementRun& run) {
    checkNewIndex(plan, run.context);
    try {
        runInOrder(plan.sql, run.context);
    } catch (const SqliteError& error) {
        if (error.code() != SQLITE_CONSTRAINT_UNIQUE) throw;
        throw duplicateRows(plan.table, plan.index);
    }
    run.context.state.rowCount = 0;
    finishDefinition(run);
}

void execute(const DropIndexesPlan& plan, StatementRun& run) {
    if (!plan.optional) {
        for (const DroppedIndex& index : plan.dropped)
            checkDroppedIndex(index, run.context);
    }
    runInOrder(plan.sql, run.context);
    run.context.state.rowCount = 0;
    finishDefinition(run);
}

// --- Dropping and emptying tables

namespace {

// Whether a table that is not among these refers to one of them.
bool isReferenced(const std::string& table, const std::vector<std::string>& tables,
                  const EngineContext& context) {
    PreparedStatement look(
        context.connection.handle(),
        "SELECT m.name FROM main.sqlite_schema AS m, pragma_foreign_key_list(m.name, 'main') "
        "AS f WHERE m.type = 'table' AND f.\"table\" = ?1 COLLATE NOCASE AND m.name <> ?1 "
        "COLLATE NOCASE");
    look.bind(1, std::string_view(table));
    bool referenced = false;
    while (look.step()) {
        const std::string child = look.text(0);
        referenced = referenced || std::ranges::none_of(tables, [&](const std::string& other) {
                         return sameName(other, child);
                     });
    }
    return referenced;
}

// SQLite would delete a referenced table's rows first, and with them, by their actions, the rows
// that refer to them.
void refuseReferenced(const DropTablesPlan& plan, const EngineContext& context) {
    std::vector<std::string> tables;
    for (const DroppedTable& table : plan.dropped) {
        if (!table.temporary) tables.push_back(table.name);
    }
    for (const std::string& table : tables) {
        refuseSchemaBound(context.catalogue, "DROP TABLE", table, withSchema(table), 0);
        if (!isReferenced(table, tables, context)) continue;
        throw tsql::ServerError(tsql::Message::ReferencedTableDropped, {table});
    }
}

}  // namespace

void execute(const DropTablesPlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    refuseReferenced(plan, context);
    for (const DroppedTable& table : plan.dropped) {
        context.counters.remove(table);
        if (!table.temporary) context.catalogue.stored().removeOf(table.name);
    }
    runInOrder(plan.sql, context);
    context.state.rowCount = 0;
    for (const DroppedTable& table : plan.dropped)
        noteDropped(table, context.state);
    finishDefinition(run);
}

void execute(const TruncatePlan& plan, StatementRun& run) {
    ExecutionContext& context = run.context;
    if (!plan.temporary && isReferenced(plan.table, {plan.table}, context)) {
        throw tsql::ServerError(tsql::Message::TruncateOfReferencedTable, {plan.table});
    }
    runInOrder(plan.sql, context);
    context.counters.restart(context.tableOf(plan.table));
    context.state.rowCount = 0;
    finishDefinition(run);
}

}  // namespace kap::engine
