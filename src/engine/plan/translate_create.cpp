#include "engine/catalog/object_names.hpp"
#include "engine/plan/statements.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;

StatementPlan translateCreate(const tsql::CreateTableStatement& statement, int line,
                              const NameScope& names) {
    TableBuilder builder(names, statement.table, line);
    builder.add(statement);
    return {builder.plan(), {}};
}

StatementPlan translateIndex(const tsql::CreateIndexStatement& statement, int line,
                             const NameScope& names) {
    const Table* table = findOwnTable(statement.table, names);
    if (table == nullptr) {
        const std::string stored = resolvedName(statement.table, names.schema(), names.catalogue());
        if (!stored.empty() && names.catalogue().findView(stored) != nullptr) {
            throw tsql::unsupported("an index on a view", line);
        }
        throw ServerError(tsql::Message::ObjectNotFound, {statement.table.text()}, line);
    }
    return {CreateIndexPlan{table->name, table->temporary, statement.name,
                            indexTexts(statement, *table, line, names)},
            {}};
}

namespace {

[[noreturn]] void nothingToDrop(const char* kind, const std::string& name, int line) {
    throw ServerError(tsql::Message::CannotDrop, {kind, name}, line);
}

DropIndexesPlan dropIndexes(const tsql::DropStatement& statement, int line,
                            const NameScope& names) {
    DropIndexesPlan plan;
    for (const tsql::ObjectName& name : statement.names) {
        tsql::ObjectName owner = name;
        owner.parts.pop_back();
        const Table* table = findOwnTable(owner, names);
        if (table == nullptr && !statement.ifExists) nothingToDrop("index", name.text(), line);
        if (table == nullptr) continue;
        const std::string index = indexName(*table, name.last());
        plan.dropped.push_back({table->name, index, name.text(), table->temporary});
        for (const std::string& each : {index, nullsIndexName(*table, name.last())}) {
            plan.sql.push_back(
                sqlOf(sql::Drop{sql::SchemaObject::Index, databaseOf(*table), each, true}));
        }
    }
    plan.optional = statement.ifExists;
    return plan;
}

}  // namespace

StatementPlan translateDrop(const tsql::DropStatement& statement, int line,
                            const NameScope& names) {
    if (statement.kind == tsql::ObjectKind::Index) return {dropIndexes(statement, line, names), {}};
    DropTablesPlan plan;
    for (const tsql::ObjectName& name : statement.names) {
        const Table* table = findOwnTable(name, names);
        if (table != nullptr) {
            plan.sql.push_back(
                sqlOf(sql::Drop{sql::SchemaObject::Table, databaseOf(*table), table->name}));
            plan.dropped.push_back({table->name, table->temporary});
        } else if (findView(name, names) != nullptr) {
            throw ServerError(tsql::Message::WrongDropKind, {"TABLE", name.text(), "view", "VIEW"},
                              line);
        } else if (!statement.ifExists) {
            nothingToDrop("table", name.text(), line);
        }
    }
    return {std::move(plan), {}};
}

}  // namespace kap::engine
