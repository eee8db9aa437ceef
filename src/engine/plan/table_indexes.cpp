#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/row_numbers.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/sqlite/definition_writer.hpp"
#include "tsql/server_error.hpp"

// The indexes of tables, by CREATE INDEX and within CREATE TABLE.
namespace kap::engine {

using tsql::ServerError;

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

std::vector<sql::OrderTerm> indexedColumns(const tsql::CreateIndexStatement& statement,
                                           const Table& table, int line) {
    std::vector<sql::OrderTerm> terms;
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
        terms.push_back({sql::column(column->name), each.descending});
    }
    return terms;
}

sql::IndexNotes notesFor(const tsql::CreateIndexStatement& statement, const Table& table,
                         int line) {
    if (statement.ignoresDuplicates && !statement.unique) {
        throw ServerError(tsql::Message::IgnoringOfNotUnique, {}, line);
    }
    sql::IndexNotes notes{statement.ignoresDuplicates, {}};
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

std::vector<std::string> indexTexts(const tsql::CreateIndexStatement& statement, const Table& table,
                                    int line, const NameScope& names) {
    sql::CreateIndex index{statement.unique,
                           databaseOf(table),
                           indexName(table, statement.name),
                           table.name,
                           indexedColumns(statement, table, line),
                           notesFor(statement, table, line)};
    if (statement.where) {
        Binder binder(names);
        Scope scope;
        scope.sources.push_back(Binder::ownColumns(table));
        scope.subqueriesRefused = true;
        sql::Expression filter = binder.condition(*statement.where, scope);
        if (!binder.usedVariables().empty()) {
            throw ServerError(tsql::Message::VariablesNotAllowed, {"CREATE INDEX"}, line);
        }
        refuseChanging(filter, statement, table, line);
        index.where = sql::Formula{std::move(filter), statement.whereText};
    }
    std::vector<std::string> texts{sqlOf(index)};
    if (!statement.unique || statement.where) return texts;
    std::vector<std::string> columns;
    for (const tsql::IndexColumn& column : statement.columns)
        columns.push_back(column.name);
    if (auto nulls = nullsIndex(table, statement.name, columns)) {
        nulls->notes.ignoresDuplicates = statement.ignoresDuplicates;
        texts.push_back(sqlOf(*nulls));
    }
    return texts;
}

// INDEX within the table's definition. On the server its name belongs to the table.
void TableBuilder::addIndex(const tsql::CreateIndexStatement& index) {
    const int line = index.table.line;
    const bool taken =
        std::ranges::any_of(keys(),
                            [&](const TableKey& key) { return sameName(key.name, index.name); }) ||
        std::ranges::any_of(indexNames_,
                            [&](const std::string& name) { return sameName(name, index.name); });
    if (taken) {
        throw ServerError(tsql::Message::IndexExists, {index.name, table().shown()}, line);
    }
    indexNames_.push_back(index.name);
    for (std::string& text : indexTexts(index, table(), line, binder_.names()))
        indexes_.push_back(std::move(text));
    if (!index.ignoresDuplicates) return;
    TableKey key{index.name, false, {}, true};
    for (const tsql::IndexColumn& column : index.columns)
        key.columns.push_back(table().find(column.name)->name);
    noteIgnoring(key);
}

}  // namespace kap::engine
