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

std::string rowVersionAssignment(const Table& table) {
    const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                    [](const Column& column) { return column.isRowVersion(); });
    return found == table.columns.end()
               ? ""
               : ", " + sqlName(found->name) + " = " + sqlOf(rowVersionCall());
}

namespace {

std::string plainUpdate(const UpdateStatement& statement, const Table& table, Binder& binder) {
    Scope scope;
    const std::string shown = shownName(table, statement.table, binder.names());
    scope.sources.push_back(Binder::tableSource(table, shown));
    std::string list;
    for (const BoundAssignment& assignment : bindAssignments(statement, table, binder, scope)) {
        list += (list.empty() ? "" : ", ") + sqlName(assignment.column->name) + " = ";
        appendSql(list, assignment.value);
    }
    std::string sql = "UPDATE " + tableSql(table.name, table.temporary) + " AS " + sqlName(shown) +
                      " SET " + list + rowVersionAssignment(table);
    if (statement.where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        sql += " WHERE ";
        appendSql(sql, binder.condition(*statement.where, scope));
    }
    return sql;
}

// The rows and their new values are found first, by the number of the row: so any FROM is possible,
// also one in which the target stands under another name or beside itself, and no value sees what
// the statement has written already.
std::string updateFrom(const TargetRows& rows, const std::vector<BoundAssignment>& assignments) {
    const Table& table = *rows.table;
    const std::string rowNumber = rowNumberName(table);
    std::vector<sql::Item> items{{rows.rowNumber, "target row"}};
    std::string list;
    for (std::size_t i = 0; i < assignments.size(); ++i) {
        items.push_back(numberedItem(assignments[i].value, i));
        list += (list.empty() ? "" : ", ") + sqlName(assignments[i].column->name) +
                " = \"found rows\"." + numberedName(i);
    }
    sql::Select found = rows.select(std::move(items));
    found.limit = rows.limit;
    return "UPDATE " + tableSql(table.name, table.temporary) + " AS \"target\" SET " + list +
           rowVersionAssignment(table) + " FROM " +
           sqlOf(sql::from(sql::Derived{std::move(found), "found rows"})) + " WHERE \"target\"." +
           rowNumber + " = \"found rows\".\"target row\"";
}

// UPDATE of the whole table or of the rows that WHERE names, in SQLite's own words; nothing when
// the values have to be found first.
std::optional<std::string> plainly(const UpdateStatement& statement, const NameScope& names,
                                   const Table& table, Binder& binder) {
    const bool whole = statement.from.empty() && !statement.top && names.settings().rowLimit == 0 &&
                       binder.commonTarget().table == nullptr;
    if (!whole) return std::nullopt;
    std::string sql = plainUpdate(statement, table, binder);
    if (binder.readsOtherRows()) return std::nullopt;
    return sql;
}

std::vector<std::string> assignedNames(const UpdateStatement& statement) {
    std::vector<std::string> names;
    for (const Assignment& each : statement.assignments) {
        if (!each.column.parts.empty()) names.push_back(each.column.last());
    }
    return names;
}

// "a" = kap_unpack("a"), ...
std::string unpacked(const std::vector<BoundAssignment>& assignments) {
    std::string list;
    for (const BoundAssignment& each : assignments) {
        const sql::Expression own = sql::column(each.column->name);
        list +=
            (list.empty() ? "" : ", ") + sqlOf(own) + " = " + sqlOf(sql::call(fn::kUnpack, own));
    }
    return list;
}

}  // namespace

SteppedUpdatePlan translateUpdateInSteps(const UpdateStatement& statement, const NameScope& names) {
    Binder binder(names);
    binder.limitRecursion(statement.maxRecursion);
    binder.writesColumns(assignedNames(statement));
    const std::vector<sql::CommonTable> with = binder.commonTables(
        statement.commonTables, nullptr, &targetName(statement.table, statement.from));
    Scope scope;
    const TargetRows rows =
        bindTarget(binder, statement.table, statement.from, statement.where, statement.top, scope);
    const Table& table = *rows.table;
    std::vector<BoundAssignment> assignments = bindAssignments(statement, table, binder, scope);
    for (BoundAssignment& each : assignments)
        each.value = sql::call(fn::kPack, rows.rowNumber, each.value);
    const std::string values = unpacked(assignments);
    const std::string caught = sqlName(capturedRows(table, RowState::Inserted).name);
    SteppedUpdatePlan plan;
    plan.pack = sqlOf(with) + updateFrom(rows, assignments);
    plan.unpackCaught = "UPDATE temp." + caught + " SET " + values;
    plan.unpack = "UPDATE " + tableSql(table.name, table.temporary) + " SET " + values + " WHERE " +
                  sqlOf(sql::call(fn::kPacked, sql::column(assignments.front().column->name)));
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
    const std::vector<sql::CommonTable> with = binder.commonTables(
        statement.commonTables, nullptr, &targetName(statement.table, statement.from));
    std::optional<std::string> plain;
    if (table != nullptr) plain = plainly(statement, names, *table, binder);
    if (plain) {
        plan.sql = sqlOf(with) + *plain;
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
        plan.sql = sqlOf(with) + updateFrom(rows, assignments);
    }
    plan.target = writeTarget(*table, names);
    plan.capture = captureFor(*table, tsql::kOnUpdate, statement.output, binder);
    addChecks(plan.capture, binder);
    noteInstead(plan.target, instead, tsql::kOnUpdate);
    return finished(std::move(plan), binder);
}

}  // namespace kap::engine
