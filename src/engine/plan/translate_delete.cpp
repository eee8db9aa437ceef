#include <utility>

#include "engine/plan/capture.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

sql::Delete plainDelete(const tsql::DeleteStatement& statement, const Table& table,
                        Binder& binder) {
    Scope scope;
    const std::string shown = shownName(table, statement.table, binder.names());
    scope.sources.push_back(Binder::tableSource(table, shown));
    sql::Delete result{tableName(table, shown)};
    if (statement.where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        result.where = binder.condition(*statement.where, scope);
    }
    return result;
}

// TOP counts rows of the target, however often FROM brings them.
sql::Delete deleteFrom(const TargetRows& rows) {
    sql::Select found = rows.select({{rows.rowNumber, "target row"}});
    if (rows.limit) {
        const sql::Expression number = sql::column("target row");
        sql::Select most = sql::one(number, sql::from(sql::Derived{std::move(found)}));
        most.distinct = true;
        most.where = sql::isNotNull(number);
        most.limit = rows.limit;
        found = std::move(most);
    }
    return {tableName(*rows.table),
            sql::InQuery{sql::Column{{}, rowNumberName(*rows.table), true}, std::move(found)}};
}

}  // namespace

StatementPlan translateDelete(const tsql::DeleteStatement& statement, const NameScope& names,
                              Constants constants) {
    const auto instead =
        insteadTarget(targetName(statement.table, statement.from), tsql::kOnDelete, names);
    if (instead && instead->fires) return translateInstead(statement, *instead, names);
    Binder binder(names, constants);
    WritePlan plan;
    plan.verb = Verb::Delete;
    plan.positioned = isPositioned(statement.where);
    binder.limitRecursion(statement.maxRecursion);
    std::vector<sql::CommonTable> with = binder.commonTables(
        statement.commonTables, nullptr, &targetName(statement.table, statement.from));
    const Table* table = nullptr;
    const bool whole = statement.from.empty() && !statement.top && names.settings().rowLimit == 0 &&
                       binder.commonTarget().table == nullptr;
    if (whole) {
        table = &requireTable(statement.table, names);
        plan.sql = sqlOf(sql::Write{plainDelete(statement, *table, binder), std::move(with)});
    } else {
        Scope scope;
        const TargetRows rows = bindTarget(binder, statement.table, statement.from, statement.where,
                                           statement.top, scope);
        table = rows.table;
        const WriteFrom write{rows, scope, tsql::kOnDelete, statement.output, {}, with};
        if (auto found = outputOfSources(write, binder)) {
            found->positioned = plan.positioned;
            noteInstead(found->target, instead, tsql::kOnDelete);
            return finished(std::move(*found), binder);
        }
        plan.sql = sqlOf(sql::Write{deleteFrom(rows), std::move(with)});
    }
    plan.target = writeTarget(*table, names);
    plan.capture = captureFor(*table, tsql::kOnDelete, statement.output, binder);
    noteInstead(plan.target, instead, tsql::kOnDelete);
    return finished(std::move(plan), binder);
}

// All rows go, without triggers.
StatementPlan translateTruncate(const tsql::TruncateStatement& statement, const NameScope& names) {
    const Table* table = findTable(statement.table, names);
    if (table == nullptr && findView(statement.table, names) != nullptr) {
        throw tsql::ServerError(tsql::Message::TruncateOfNoTable, {statement.table.text()},
                                statement.table.line);
    }
    if (table == nullptr) {
        throw tsql::ServerError(tsql::Message::TableToTruncateNotFound, {statement.table.text()},
                                statement.table.line);
    }
    TruncatePlan plan{table->name, table->temporary, {}};
    sql::Update counter{
        {table->temporary ? sql::Database::Temporary : sql::Database::Main, "kap_counters"},
        {{"last", sql::null()}}};
    counter.where = sql::equal(sql::column("owner"), sql::text(table->name));
    plan.sql.push_back(sqlOf(sql::Write{sql::Delete{tableName(*table)}}));
    plan.sql.push_back(sqlOf(sql::Write{std::move(counter)}));
    return {std::move(plan), {}};
}

}  // namespace kap::engine
