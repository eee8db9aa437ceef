#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/plan/capture.hpp"
#include "engine/plan/statements.hpp"
#include "engine/plan/translator.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::Assignment;
using tsql::ServerError;
using tsql::UpdateStatement;

namespace {

void checkUpdatable(const Column& column, int line) {
    if (column.isRowVersion()) throw ServerError(tsql::Message::TimestampNotUpdatable, {}, line);
    if (column.computed) {
        throw ServerError(tsql::Message::ColumnNotModifiable, {column.name}, line);
    }
    if (column.identity) {
        throw ServerError(tsql::Message::IdentityNotUpdatable, {column.name}, line);
    }
}

// "@x = value" leaves the value of each row in a variable, and gives it on.
sql::Expression assignedTo(const std::string& name, const BoundExpression& value, int line,
                           Binder& binder) {
    const Variable* variable = binder.names().variable(name);
    if (variable == nullptr) {
        throw ServerError(tsql::Message::UndeclaredVariable, {name}, line);
    }
    return sql::call(fn::kAssign, variable->slot,
                     binder.convertTo(value, variable->type, line).tree);
}

// The type that a value has once it has passed through a variable.
BoundExpression throughVariable(const std::string& name, const BoundExpression& value, int line,
                                Binder& binder) {
    if (name.empty()) return value;
    sql::Expression assigned = assignedTo(name, value, line, binder);
    return BoundExpression::expression(std::move(assigned), binder.names().variable(name)->type,
                                       true);
}

// A column of the target that is given the value that it has.
BoundAssignment unchanged(const Table& table, const Binder& binder, const Scope& scope, int line) {
    const Binder::CommonTarget& common = binder.commonTarget();
    const Source& source = scope.sources[scope.target];
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        const Column* column =
            common.table == &table ? common.columns[i].second : &table.columns[i];
        const bool own = column != nullptr && table.find(column->name) == column;
        if (!own || column->computed || column->identity || column->isRowVersion()) continue;
        return {column, source.columns[i].value.tree};
    }
    throw tsql::unsupported("SET @variable in UPDATE of this table", line);
}

// Variables that are assigned without a column go along with the first column that is written.
void addVariables(const UpdateStatement& statement, const Table& table, Binder& binder,
                  Scope& scope, std::vector<BoundAssignment>& result) {
    for (const Assignment& assignment : statement.assignments) {
        if (!assignment.column.parts.empty()) continue;
        const int line = assignment.value.value->line;
        const BoundExpression value = binder.value(*assignment.value.value, scope);
        sql::Expression assigned = assignedTo(assignment.variable, value, line, binder);
        if (result.empty()) result.push_back(unchanged(table, binder, scope, line));
        result.front().value = sql::call(fn::kFirst, result.front().value, std::move(assigned));
    }
}

}  // namespace

std::vector<BoundAssignment> bindAssignments(const UpdateStatement& statement, const Table& table,
                                             Binder& binder, Scope& scope) {
    const Restored place(scope.aggregates, AggregateUse::RefusedInSet);
    std::vector<BoundAssignment> result;
    for (const Assignment& assignment : statement.assignments) {
        if (assignment.column.parts.empty()) continue;
        const std::string& name = assignment.column.last();
        const int line = assignment.column.line;
        const Column* column = &binder.targetColumn(table, assignment.column);
        checkUpdatable(*column, line);
        const bool repeated =
            std::any_of(result.begin(), result.end(),
                        [&](const BoundAssignment& other) { return other.column == column; });
        if (repeated) {
            throw ServerError(tsql::Message::ColumnAssignedTwice, {name}, line);
        }
        if (!assignment.value.value) {
            result.push_back({column, defaultOf(*column)});
            continue;
        }
        const BoundExpression bound = binder.value(*assignment.value.value, scope);
        result.push_back(
            {column, binder.stored(throughVariable(assignment.variable, bound, line, binder),
                                   column->type, line, writtenLiteral(*assignment.value.value))});
    }
    addVariables(statement, table, binder, scope, result);
    return result;
}

void addRowVersion(std::vector<sql::Assignment>& assignments, const Table& table) {
    const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                    [](const Column& column) { return column.isRowVersion(); });
    if (found != table.columns.end()) assignments.push_back({found->name, rowVersionCall()});
}

namespace {

sql::Update plainUpdate(const UpdateStatement& statement, const Table& table, Binder& binder) {
    Scope scope;
    const std::string shown = shownName(table, statement.table, binder.names());
    scope.sources.push_back(Binder::tableSource(table, shown));
    sql::Update update{tableName(table, shown)};
    for (BoundAssignment& each : bindAssignments(statement, table, binder, scope))
        update.assignments.push_back({each.column->name, std::move(each.value)});
    addRowVersion(update.assignments, table);
    if (statement.where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        update.where = binder.condition(*statement.where, scope);
    }
    return update;
}

// The rows and their new values are found first, by the number of the row: so any FROM is possible,
// also one in which the target stands under another name or beside itself, and no value sees what
// the statement has written already.
sql::Update updateFrom(const TargetRows& rows, const std::vector<BoundAssignment>& assignments) {
    constexpr const char* kWritten = "target";
    constexpr const char* kNewValues = "found rows";
    constexpr const char* kItsRow = "target row";
    const Table& table = *rows.table;
    sql::Update update{tableName(table, kWritten)};
    std::vector<sql::Item> items{{rows.rowNumber, kItsRow}};
    for (std::size_t i = 0; i < assignments.size(); ++i) {
        items.push_back(numberedItem(assignments[i].value, i));
        update.assignments.push_back({assignments[i].column->name, numberedColumn(kNewValues, i)});
    }
    addRowVersion(update.assignments, table);
    sql::Select found = rows.select(std::move(items));
    found.limit = rows.limit;
    update.from = sql::from(sql::Derived{std::move(found), kNewValues});
    update.where = sql::equal(sql::Column{kWritten, rowNumberName(table), true},
                              sql::column(kNewValues, kItsRow));
    return update;
}

// UPDATE of the whole table or of the rows that WHERE names, in SQLite's own words; nothing when
// the values have to be found first.
std::optional<sql::Update> plainly(const UpdateStatement& statement, const NameScope& names,
                                   const Table& table, Binder& binder) {
    const bool whole = statement.from.empty() && !statement.top && names.settings().rowLimit == 0 &&
                       binder.commonTarget().table == nullptr;
    if (!whole) return std::nullopt;
    sql::Update update = plainUpdate(statement, table, binder);
    if (binder.readsOtherRows()) return std::nullopt;
    return update;
}

std::vector<std::string> assignedNames(const UpdateStatement& statement) {
    std::vector<std::string> names;
    for (const Assignment& each : statement.assignments) {
        if (!each.column.parts.empty()) names.push_back(each.column.last());
    }
    return names;
}

// "a" = kap_unpack("a"), ... of the table that is to be named.
sql::Update unpacked(const std::vector<BoundAssignment>& assignments) {
    sql::Update update;
    update.assignments.reserve(assignments.size());
    for (const BoundAssignment& each : assignments) {
        update.assignments.push_back(
            {each.column->name, sql::call(fn::kUnpack, sql::column(each.column->name))});
    }
    return update;
}

}  // namespace

SteppedUpdatePlan translateUpdateInSteps(const UpdateStatement& statement, const NameScope& names) {
    Binder binder(names);
    binder.limitRecursion(statement.maxRecursion);
    binder.writesColumns(assignedNames(statement));
    std::vector<sql::CommonTable> with = binder.commonTables(
        statement.commonTables, nullptr, &targetName(statement.table, statement.from));
    Scope scope;
    const TargetRows rows =
        bindTarget(binder, statement.table, statement.from, statement.where, statement.top, scope);
    const Table& table = *rows.table;
    std::vector<BoundAssignment> assignments = bindAssignments(statement, table, binder, scope);
    for (BoundAssignment& each : assignments)
        each.value = sql::call(fn::kPack, rows.rowNumber, each.value);
    SteppedUpdatePlan plan;
    plan.pack = sqlOf(sql::Write{updateFrom(rows, assignments), std::move(with)});
    sql::Update values = unpacked(assignments);
    values.table = tableName(capturedRows(table, RowState::Inserted));
    plan.unpackCaught = sqlOf(sql::Write{values});
    values.table = tableName(table);
    values.where = sql::call(fn::kPacked, sql::column(assignments.front().column->name));
    plan.unpack = sqlOf(sql::Write{std::move(values)});
    plan.values = binder.boundValues();
    return plan;
}

StatementPlan translateUpdate(const UpdateStatement& statement, const NameScope& names,
                              Constants constants) {
    const auto instead =
        insteadTarget(targetName(statement.table, statement.from), tsql::kOnUpdate, names);
    if (instead && instead->fires) return translateInstead(statement, *instead, names);
    Binder binder(names, constants);
    const bool accumulates =
        std::any_of(statement.assignments.begin(), statement.assignments.end(),
                    [](const Assignment& each) { return !each.variable.empty(); });
    if (accumulates) binder.readVariablesPerRow();
    WritePlan plan;
    plan.verb = Verb::Update;
    plan.positioned = isPositioned(statement.where);
    plan.columns = assignedNames(statement);
    binder.limitRecursion(statement.maxRecursion);
    const Table* table = findTable(statement.table, names);
    binder.writesColumns(plan.columns);
    std::vector<sql::CommonTable> with = binder.commonTables(
        statement.commonTables, nullptr, &targetName(statement.table, statement.from));
    std::optional<sql::Update> plain;
    if (table != nullptr) plain = plainly(statement, names, *table, binder);
    if (plain) {
        plan.sql = sqlOf(sql::Write{std::move(*plain), std::move(with)});
    } else {
        Scope scope;
        const TargetRows rows = bindTarget(binder, statement.table, statement.from, statement.where,
                                           statement.top, scope);
        table = rows.table;
        const auto assignments = bindAssignments(statement, *table, binder, scope);
        const WriteFrom write{rows, scope, tsql::kOnUpdate, statement.output, assignments, with};
        if (auto found = outputOfSources(write, binder)) {
            found->positioned = plan.positioned;
            noteInstead(found->target, instead, tsql::kOnUpdate);
            return finished(std::move(*found), binder);
        }
        plan.sql = sqlOf(sql::Write{updateFrom(rows, assignments), std::move(with)});
    }
    plan.target = writeTarget(*table, names);
    plan.capture = captureFor(*table, tsql::kOnUpdate, statement.output, binder);
    addChecks(plan.capture, binder);
    noteInstead(plan.target, instead, tsql::kOnUpdate);
    return finished(std::move(plan), binder);
}

}  // namespace kap::engine
