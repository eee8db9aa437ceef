#include <algorithm>

#include "ado/embedded/translate/statements.hpp"
#include "tsql/server_error.hpp"

namespace kap::ado::embedded {

using tsql::Assignment;
using tsql::ServerError;
using tsql::UpdateStatement;

namespace {

struct BoundAssignment {
    const Column* column;
    std::string value;
};

void checkUpdatable(const Column& column, int line) {
    if (column.isRowVersion()) throw ServerError(272, "Cannot update a timestamp column.", line);
    if (column.identity) {
        throw ServerError(8102, "Cannot update identity column '" + column.name + "'.", line);
    }
}

std::vector<BoundAssignment> bindAssignments(const UpdateStatement& statement, const Table& table,
                                             Binder& binder, Scope& scope) {
    const Replaced place(scope.aggregates, AggregateUse::RefusedInSet);
    std::vector<BoundAssignment> result;
    for (const Assignment& assignment : statement.assignments) {
        const std::string& name = assignment.column.last();
        const int line = assignment.column.line;
        const Column* column = table.find(name);
        if (column == nullptr) throw ServerError(207, "Invalid column name '" + name + "'.", line);
        checkUpdatable(*column, line);
        const bool repeated =
            std::any_of(result.begin(), result.end(),
                        [&](const BoundAssignment& other) { return other.column == column; });
        if (repeated) {
            throw ServerError(
                264,
                "The column name '" + name +
                    "' is specified more than once in the SET clause or column list of an INSERT. "
                    "A "
                    "column cannot be assigned more than one value in the same clause. Modify the "
                    "clause to make sure that a column is updated only once. If this statement "
                    "updates or inserts columns into a view, column aliasing can conceal the "
                    "duplication in your code.",
                line);
        }
        std::string value = "NULL";
        if (assignment.value.value) {
            value = binder.stored(binder.value(*assignment.value.value, scope), column->type, line);
        } else if (column->defaultSql) {
            value = "(" + *column->defaultSql + ")";
        }
        result.push_back({column, std::move(value)});
    }
    return result;
}

std::string rowVersionAssignment(const Table& table) {
    const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                    [](const Column& column) { return column.isRowVersion(); });
    return found == table.columns.end() ? ""
                                        : ", " + sqlName(found->name) + " = " + rowVersionCall();
}

std::string plainUpdate(const UpdateStatement& statement, const Table& table, Binder& binder) {
    Scope scope;
    scope.sources.push_back(Binder::tableSource(table, table.name));
    std::string list;
    for (const BoundAssignment& assignment : bindAssignments(statement, table, binder, scope)) {
        list += (list.empty() ? "" : ", ") + sqlName(assignment.column->name) + " = " +
                assignment.value;
    }
    std::string sql = "UPDATE " + tableSql(table.name, table.temporary) + " AS " +
                      sqlName(table.name) + " SET " + list + rowVersionAssignment(table);
    if (statement.where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        sql += " WHERE " + binder.condition(*statement.where, scope);
    }
    return sql;
}

// The rows and their new values are found first, by the number of the row: so any FROM is possible,
// also one in which the target stands under another name or beside itself.
std::string updateFrom(const UpdateStatement& statement, const TargetRows& rows, Binder& binder,
                       Scope& scope) {
    const Table& table = *rows.table;
    const std::string rowNumber = rowNumberName(table);
    std::string values = sqlName(rows.name) + "." + rowNumber + " AS \"target row\"";
    std::string list;
    const auto assignments = bindAssignments(statement, table, binder, scope);
    for (std::size_t i = 0; i < assignments.size(); ++i) {
        values += ", " + assignments[i].value + " AS " + numberedName(i);
        list += (list.empty() ? "" : ", ") + sqlName(assignments[i].column->name) +
                " = \"found rows\"." + numberedName(i);
    }
    return "UPDATE " + tableSql(table.name, table.temporary) + " AS \"target\" SET " + list +
           rowVersionAssignment(table) + " FROM (SELECT " + values + rows.tail + rows.limit +
           ") AS \"found rows\" WHERE \"target\"." + rowNumber + " = \"found rows\".\"target row\"";
}

}  // namespace

Translation translateUpdate(const UpdateStatement& statement, const Catalogue& catalogue) {
    Binder binder(catalogue);
    Translation result;
    result.kind = StatementKind::Update;
    result.writes = true;
    if (statement.from.empty() && !statement.top) {
        const Table& table = requireTable(statement.table, catalogue);
        result.table = table.name;
        result.sql.push_back(plainUpdate(statement, table, binder));
        return result;
    }
    Scope scope;
    const TargetRows rows =
        bindTarget(binder, statement.table, statement.from, statement.where, statement.top, scope);
    result.table = rows.table->name;
    result.sql.push_back(updateFrom(statement, rows, binder, scope));
    return result;
}

}  // namespace kap::ado::embedded
