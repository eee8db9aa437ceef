#include <algorithm>

#include "engine/catalog/object_names.hpp"
#include "engine/catalog/schema_binding.hpp"
#include "engine/executor/statement_runner.hpp"
#include "engine/executor/violations.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/plan/translator.hpp"

// The statements that change the schema: making, filling, dropping and emptying tables.
namespace kap::engine {

void StatementRunner::define(CompiledStatement& prepared, const tsql::Statement& statement,
                             std::vector<ado::Result>& results) {
    requireHealthy();
    Transactions::WriteScope scope(transactions_);
    captures_.removeStale();
    translate(prepared, statement, state_.frame().program.names());
    const Translation& made = *prepared.translation;
    checkReferences(made, statement);
    checkIndexes(made);
    for (const DroppedTable& table : made.dropped) {
        counters_.remove(table);
        if (!table.temporary) {
            catalogue_.stored().removeOf(table.name);
        }
    }
    runDefinition(made, statement);
    if (std::holds_alternative<tsql::TruncateStatement>(statement.node)) {
        counters_.restart(tableOf(made));
    }
    if (made.created) {
        counters_.add(*made.created);
    }
    state_.rowCount = 0;
    if (made.fills) {
        PreparedStatement rows(connection_.handle(), made.sql.back());
        bind(made, rows);
        rows.run();
        state_.rowCount = connection_.database().changes();
        continueIdentity(made.created->table);
        addCount(results);
    }
    noteTables(made);
    prepared.ready = false;
    if (std::holds_alternative<tsql::CreateTableStatement>(statement.node) && made.created) {
        catalogue_.added(made.created->table);
    } else {
        catalogue_.invalidate();
    }
    scope.keep();
}

// Each text is prepared only when the one before it has changed the schema.
void StatementRunner::runDefinition(const Translation& made, const tsql::Statement& statement) {
    const auto* index = std::get_if<tsql::CreateIndexStatement>(&statement.node);
    if (index != nullptr) checkNewIndex(made, index->name);
    const std::size_t filling = made.fills ? 1 : 0;
    try {
        for (std::size_t i = 0; i + filling < made.sql.size(); ++i) {
            PreparedStatement(connection_.handle(), made.sql[i]).run();
        }
    } catch (const SqliteError& error) {
        if (index == nullptr || error.code() != SQLITE_CONSTRAINT_UNIQUE) throw;
        throw duplicateRows(made.table, index->name);
    }
}

namespace {

tsql::ServerError indexExists(const std::string& name, const std::string& table) {
    return {tsql::Message::IndexExists, {name, bareName(table)}};
}

}  // namespace

void StatementRunner::checkNewIndex(const Translation& made, const std::string& name) const {
    if (made.temporary) {
        PreparedStatement look(connection_.handle(),
                               "SELECT 1 FROM temp.sqlite_schema WHERE type = 'index' AND name = "
                               "?1 COLLATE NOCASE");
        const std::string stored = indexName(tableOf(made), name);
        look.bind(1, std::string_view(stored));
        if (look.step()) throw indexExists(name, made.table);
        return;
    }
    for (const IndexInfo& known : catalogue_.keysAndIndexes()) {
        if (!sameName(known.table, made.table) || !sameName(known.name, name)) continue;
        throw indexExists(name, made.table);
    }
}

// A table that was filled with the identities of another one goes on from the farthest.
void StatementRunner::continueIdentity(const Table& table) {
    for (const Column& column : table.columns) {
        if (!column.identity) continue;
        PreparedStatement look(connection_.handle(),
                               std::string("SELECT ") +
                                   (column.identity->increment > 0 ? "max(" : "min(") +
                                   sqlName(column.name) + ") FROM " +
                                   (table.temporary ? "temp." : "main.") + sqlName(table.name));
        if (look.step() && !look.isNull(0)) {
            const std::int64_t farthest = look.integer(0);
            look.reset();
            counters_.noteIdentity(table.name, farthest);
            (void)counters_.takeLastIdentity();
        }
    }
}

// SQLite would delete a referenced table's rows first, and with them, by their actions, the rows
// that refer to them.
void StatementRunner::checkReferences(const Translation& translation,
                                      const tsql::Statement& statement) const {
    const bool truncates = std::holds_alternative<tsql::TruncateStatement>(statement.node);
    std::vector<std::string> tables;
    for (const DroppedTable& table : translation.dropped) {
        if (!table.temporary) tables.push_back(table.name);
    }
    if (truncates && !translation.temporary) tables.push_back(translation.table);
    for (const std::string& table : tables) {
        if (!truncates) refuseSchemaBound(catalogue_, "DROP TABLE", table, withSchema(table), 0);
        PreparedStatement look(
            connection_.handle(),
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
        if (!referenced) continue;
        throw truncates ? tsql::ServerError(tsql::Message::TruncateOfReferencedTable, {table})
                        : tsql::ServerError(tsql::Message::ReferencedTableDropped, {table});
    }
}

void StatementRunner::checkIndexes(const Translation& translation) const {
    if (translation.optional) return;
    for (const DroppedIndex& index : translation.dropsIndexes) {
        refuseKeyIndex(translation, index);
        refuseServingIndex(translation, index);
        PreparedStatement look(connection_.handle(),
                               std::string("SELECT 1 FROM ") + (index.temporary ? "temp" : "main") +
                                   ".sqlite_schema WHERE type = 'index' AND name = ?1 COLLATE "
                                   "NOCASE");
        look.bind(1, std::string_view(index.name));
        if (look.step()) continue;
        throw tsql::ServerError(tsql::Message::CannotDrop, {"index", index.shown}).withState(6);
    }
}

// The index of a key goes with its constraint.
void StatementRunner::refuseKeyIndex(const Translation& translation,
                                     const DroppedIndex& index) const {
    for (const ConstraintInfo& key : catalogue_.constraints()) {
        const std::string_view type = key.type;
        const bool serves = (type == "PK" || type == "UQ") && !index.temporary &&
                            sameName(key.table, translation.table) &&
                            sameName(indexName(tableOf(translation), key.name), index.name);
        if (!serves) continue;
        throw tsql::ServerError(tsql::Message::IndexServesConstraint,
                                {index.shown, type == "PK" ? "PRIMARY" : "UNIQUE"});
    }
}

// A unique index may be what a foreign key refers to.
void StatementRunner::refuseServingIndex(const Translation& translation,
                                         const DroppedIndex& index) const {
    if (index.temporary) return;
    const Table& table = tableOf(translation);
    for (const IndexInfo& each : catalogue_.indexes()) {
        const bool dropped =
            sameName(each.table, table.name) && sameName(indexName(table, each.name), index.name);
        if (!dropped || !each.unique || !catalogue_.servedBy(table, each.columns)) continue;
        throw tsql::ServerError(tsql::Message::IndexServesConstraint, {index.shown, "FOREIGN"})
            .withState(6);
    }
}

// Temporary tables end with the procedure that made them, if it has not dropped them before.
void StatementRunner::noteTables(const Translation& translation) {
    for (const DroppedTable& table : translation.dropped) {
        for (Frame* frame : state_.frames) {
            std::erase(frame->ownTables, table.name);
        }
    }
    if (translation.created && translation.created->table.temporary) {
        state_.frame().ownTables.push_back(translation.created->table.name);
    }
}

}  // namespace kap::engine
