#include "ado/embedded/translate/statements.hpp"

namespace kap::ado::embedded {

namespace {

std::string plainDelete(const tsql::DeleteStatement& statement, const Table& table,
                        Binder& binder) {
    Scope scope;
    scope.sources.push_back(Binder::tableSource(table, table.name));
    std::string sql =
        "DELETE FROM " + tableSql(table.name, table.temporary) + " AS " + sqlName(table.name);
    if (statement.where) {
        scope.aggregates = AggregateUse::RefusedInWhere;
        sql += " WHERE " + binder.condition(*statement.where, scope);
    }
    return sql;
}

}  // namespace

Translation translateDelete(const tsql::DeleteStatement& statement, const Catalogue& catalogue) {
    Binder binder(catalogue);
    Translation result;
    result.kind = StatementKind::Delete;
    result.writes = true;
    if (statement.from.empty() && !statement.top) {
        const Table& table = requireTable(statement.table, catalogue);
        result.table = table.name;
        result.sql.push_back(plainDelete(statement, table, binder));
        return result;
    }
    Scope scope;
    const TargetRows rows =
        bindTarget(binder, statement.table, statement.from, statement.where, statement.top, scope);
    const std::string rowNumber = rowNumberName(*rows.table);
    result.table = rows.table->name;
    result.sql.push_back("DELETE FROM " + tableSql(rows.table->name, rows.table->temporary) +
                         " WHERE " + rowNumber + " IN (SELECT " + sqlName(rows.name) + "." +
                         rowNumber + rows.tail + rows.limit + ")");
    return result;
}

}  // namespace kap::ado::embedded
