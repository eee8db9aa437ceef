#include <algorithm>
#include <utility>

#include "base/ascii.hpp"
#include "engine/plan/statements.hpp"
#include "engine/plan/table_builder.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::ServerError;

namespace {

const tsql::Select* onlySelect(const tsql::Query& query) {
    return query.terms.empty() ? nullptr : std::get_if<tsql::Select>(&query.terms.front().node);
}

bool isAssignment(const tsql::SelectItem& item) {
    return std::holds_alternative<tsql::AssignmentItem>(item.node);
}

// The slots that the items of SELECT @a = ..., @b = ... go to; empty for a query that gives rows.
std::vector<int> assignedSlots(const tsql::Select& select, const NameScope& names, int line) {
    std::vector<int> slots;
    for (const tsql::SelectItem& item : select.items) {
        if (!isAssignment(item)) continue;
        const std::string& name = std::get<tsql::AssignmentItem>(item.node).variable;
        const Variable* variable = names.variable(name);
        if (variable == nullptr) {
            throw ServerError(tsql::Message::UndeclaredVariable, {name}, line);
        }
        slots.push_back(variable->slot);
    }
    if (!slots.empty() && slots.size() != select.items.size()) {
        throw ServerError(tsql::Message::AssignmentWithRetrieval, {}, line);
    }
    return slots;
}

// SELECT @x = @x + a: each row goes on from what the row before has left.
bool readsWhatItAssigns(const Binder& binder, const std::vector<int>& slots) {
    return std::any_of(slots.begin(), slots.end(), [&](int slot) {
        const auto& used = binder.usedVariables();
        return std::find(used.begin(), used.end(), slot) != used.end();
    });
}

// The values are brought to the types of the variables outside the query, row by row.
StatementPlan assignment(const tsql::Query& query, const std::vector<int>& slots,
                         const NameScope& names) {
    Binder binder(names);
    BoundQuery bound = binder.query(query, nullptr, QueryPlace::InsertRows);
    const bool accumulates = readsWhatItAssigns(binder, slots);
    Binder perRow(names);
    if (accumulates) {
        perRow.readVariablesPerRow();
        bound = query.orderBy.empty() ? perRow.query(query, nullptr, QueryPlace::InsertRows)
                                      : perRow.valuesInOrder(query);
    }
    AssignmentPlan plan;
    plan.targets.reserve(slots.size());
    sql::Select select;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const tsql::TypeSpec& type = names.variables()[static_cast<std::size_t>(slots[i])].type;
        const BoundExpression value = bound.columns[i].value.readBy(numberedColumn(i));
        const BoundExpression converted = binder.convertTo(value, type, query.line);
        select.items.push_back({converted.tree});
        plan.targets.push_back({slots[i], converted.type});
    }
    select.from = sql::from(sql::Derived{std::move(bound.tree)});
    plan.sql = sqlOf(sql::Query{std::move(select)});
    return finished(std::move(plan), accumulates ? perRow : binder);
}

}  // namespace

StatementPlan translateSelect(const tsql::SelectStatement& statement, const NameScope& names,
                              Constants constants) {
    const tsql::Query& query = *statement.query;
    if (const tsql::Select* select = onlySelect(query)) {
        if (select->into) return translateSelectInto(query, *select->into, names);
        const std::vector<int> slots = assignedSlots(*select, names, query.line);
        if (!slots.empty()) return assignment(query, slots, names);
    }
    Binder binder(names, constants);
    const BoundQuery bound = binder.query(query, nullptr, QueryPlace::Whole);
    for (const OutputColumn& column : bound.columns) {
        if (!column.value.newIdentity) continue;
        throw ServerError(tsql::Message::IdentityWithoutInto, {}, query.line);
    }
    return finished(queryPlan(bound), binder);
}

QueryPlan queryPlan(const BoundQuery& bound) {
    QueryPlan plan;
    plan.sql = sqlOf(bound.tree);
    plan.columns.reserve(bound.columns.size());
    for (const OutputColumn& column : bound.columns)
        plan.columns.push_back(resultColumn(column));
    return plan;
}

// The new table has the columns' types; an identity column of one table stays one.
StatementPlan translateSelectInto(const tsql::Query& query, const tsql::ObjectName& name,
                                  const NameScope& names) {
    Binder binder(names);
    BoundQuery rows = binder.query(query, nullptr, QueryPlace::InsertRows);
    TableBuilder builder(names, name, query.line);
    std::vector<std::string> columns;
    sql::Select values;
    for (std::size_t i = 0; i < rows.columns.size(); ++i) {
        const OutputColumn& output = rows.columns[i];
        if (output.name.empty()) {
            throw ServerError(tsql::Message::MissingName, {}, query.line);
        }
        Column column;
        column.name = output.name;
        column.type = output.value.type;
        column.nullable = output.value.nullable;
        column.collation = output.value.collation;
        const bool plain = output.value.column != nullptr && output.value.plainColumn;
        if (plain && output.value.column->identity) column.identity = output.value.column->identity;
        const bool numbered = output.value.newIdentity.has_value();
        if (numbered) column.identity = output.value.newIdentity;
        const bool version = column.isRowVersion();
        builder.add(std::move(column), query.line);
        columns.push_back(output.name);
        values.items.push_back({version    ? rowVersionCall()
                                : numbered ? identityCall(builder.table().name)
                                           : numberedColumn(i)});
    }
    SelectIntoPlan plan{builder.plan(), {}};
    const Table& table = plan.table.created.table;
    const std::int64_t most = names.settings().rowLimit;
    values.from = sql::from(sql::Derived{std::move(rows.tree)});
    if (most > 0) values.limit = sql::number(most);
    plan.fill = sqlOf(sql::Write{
        sql::Insert{tableName(table), std::move(columns), sql::Query{std::move(values)}}});
    return finished(std::move(plan), binder);
}

}  // namespace kap::engine
