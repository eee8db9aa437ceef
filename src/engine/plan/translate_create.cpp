#include <algorithm>
#include <array>

#include "engine/catalog/index_notes.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/source_text.hpp"
#include "engine/plan/statements.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;

StatementPlan translateCreate(const tsql::CreateTableStatement& statement, int line,
                              const NameScope& names) {
    TableBuilder builder(names, statement.table, line);
    builder.add(statement);
    return {builder.plan(), {}};
}

bool isSteady(const Column& column) {
    const std::string definition = column.defaultSql.value_or("");
    // It is the file's text.
    return std::ranges::none_of(
        std::array{fn::kColumnSystem, fn::kColumnCall, fn::kNow, fn::kUtcnow, fn::kSysnow},
        [&](const fn::Function& function) {
            return definition.find(std::string(function.name) + "(") != std::string::npos;
        });
}

void notSteady(const Column& column, const Table& table, int line) {
    throw ServerError(tsql::Message::NonDeterministicIndexColumn, {column.name, table.shown()},
                      line);
}

namespace {

std::string columnList(const tsql::CreateIndexStatement& statement, const Table& table, int line) {
    std::string list;
    for (const tsql::IndexColumn& each : statement.columns) {
        const Column* column = table.find(each.name);
        if (column == nullptr) {
            throw ServerError(tsql::Message::IndexColumnNotFound, {each.name}, line);
        }
        if (column->computed && !isSteady(*column)) notSteady(*column, table, line);
        const bool repeated =
            std::any_of(statement.columns.begin(), statement.columns.end(),
                        [&](const tsql::IndexColumn& other) {
                            return &other < &each && sameName(other.name, each.name);
                        });
        if (repeated) {
            throw ServerError(tsql::Message::DuplicateIndexColumn, {each.name}, line);
        }
        list += (list.empty() ? "" : ", ") + sqlName(column->name);
        if (each.descending) list += " DESC";
    }
    return list;
}

IndexNotes notesFor(const tsql::CreateIndexStatement& statement, const Table& table, int line) {
    if (statement.ignoresDuplicates && !statement.unique) {
        throw ServerError(tsql::Message::IgnoringOfNotUnique, {}, line);
    }
    IndexNotes notes{statement.ignoresDuplicates, {}};
    for (const std::string& name : statement.included) {
        const Column* column = table.find(name);
        if (column == nullptr) throw ServerError(tsql::Message::IndexColumnNotFound, {name}, line);
        const bool key = std::ranges::any_of(statement.columns, [&](const tsql::IndexColumn& each) {
            return sameName(each.name, name);
        });
        const bool twice = std::ranges::any_of(
            notes.included, [&](const std::string& each) { return sameName(each, name); });
        if (key || twice) {
            throw ServerError(tsql::Message::DuplicateIndexColumn, {name}, line);
        }
        notes.included.push_back(column->name);
    }
    return notes;
}

// A filter whose answer changes by itself would leave rows in the index that no longer belong
// there.
void refuseChanging(const sql::Expression& filter, const tsql::CreateIndexStatement& statement,
                    const Table& table, int line) {
    static constexpr std::array kChanging{fn::kSystem, fn::kCall,  fn::kNow,    fn::kUtcnow,
                                          fn::kSysnow, fn::kNewid, fn::kRandom, fn::kRandomBytes};
    const bool changes = sql::contains(filter, [](const sql::Kind& kind) {
        const auto* call = std::get_if<sql::Call>(&kind);
        return call != nullptr && std::ranges::find(kChanging, call->function) != kChanging.end();
    });
    if (!changes) return;
    throw ServerError(tsql::Message::WrongIndexFilter, {statement.name, table.shown()}, line);
}

}  // namespace

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
    std::string sql = std::string("CREATE ") + (statement.unique ? "UNIQUE " : "") + "INDEX " +
                      (table->temporary ? "temp." : "main.") +
                      sqlName(indexName(*table, statement.name)) + " ON " + sqlName(table->name) +
                      " (" + columnList(statement, *table, line) + ")" +
                      commentOf(notesFor(statement, *table, line));
    if (statement.where) {
        Binder binder(names);
        Scope scope;
        scope.sources.push_back(Binder::ownColumns(*table));
        scope.subqueriesRefused = true;
        const sql::Expression filter = binder.condition(*statement.where, scope);
        if (!binder.usedVariables().empty()) {
            throw ServerError(tsql::Message::VariablesNotAllowed, {"CREATE INDEX"}, line);
        }
        refuseChanging(filter, statement, *table, line);
        sql = withSource(sql + " WHERE " + sqlOf(filter), statement.whereText);
    }
    CreateIndexPlan plan{table->name, table->temporary, statement.name, {std::move(sql)}};
    if (!statement.unique || statement.where) return {std::move(plan), {}};
    std::vector<std::string> columns;
    for (const tsql::IndexColumn& column : statement.columns)
        columns.push_back(column.name);
    std::string nulls = nullsIndex(*table, statement.name, columns);
    if (!nulls.empty()) {
        nulls += commentOf({statement.ignoresDuplicates, {}});
        plan.sql.push_back(std::move(nulls));
    }
    return {std::move(plan), {}};
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
        const std::string place = table->temporary ? "temp." : "main.";
        const std::string index = indexName(*table, name.last());
        plan.dropped.push_back({table->name, index, name.text(), table->temporary});
        plan.sql.push_back("DROP INDEX IF EXISTS " + place + sqlName(index));
        plan.sql.push_back("DROP INDEX IF EXISTS " + place + sqlName(index + " (nulls)"));
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
            plan.sql.push_back("DROP TABLE " + tableSql(table->name, table->temporary));
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
