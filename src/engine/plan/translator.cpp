#include "engine/plan/translator.hpp"

#include <utility>

#include "engine/plan/statement_kinds.hpp"
#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

struct Dispatch {
    const NameScope& names;
    int line;
    Constants constants;

    StatementPlan operator()(const tsql::SelectStatement& statement) const {
        return translateSelect(statement, names, constants);
    }
    StatementPlan operator()(const tsql::InsertStatement& statement) const {
        return translateInsert(statement, line, names, constants);
    }
    StatementPlan operator()(const tsql::UpdateStatement& statement) const {
        return translateUpdate(statement, names, constants);
    }
    StatementPlan operator()(const tsql::DeleteStatement& statement) const {
        return translateDelete(statement, names, constants);
    }
    StatementPlan operator()(const tsql::MergeStatement& statement) const {
        return translateMerge(statement, line, names);
    }
    StatementPlan operator()(const tsql::TruncateStatement& statement) const {
        return translateTruncate(statement, names);
    }
    StatementPlan operator()(const tsql::CreateTableStatement& statement) const {
        return translateCreate(statement, line, names);
    }
    StatementPlan operator()(const tsql::CreateIndexStatement& statement) const {
        return translateIndex(statement, line, names);
    }
    StatementPlan operator()(const tsql::DropStatement& statement) const {
        return translateDrop(statement, line, names);
    }
    template <ScriptStatement Node>
    StatementPlan operator()(const Node& /*statement*/) const {
        throw tsql::unsupported("this statement here", line);
    }
    template <FlowStatement Node>
    StatementPlan operator()(const Node& /*statement*/) const {
        throw tsql::unsupported("this statement here", line);
    }
};

// Whether a statement is planned.
struct IsPlanned {
    template <PlannedStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return true;
    }
    bool operator()(const tsql::InsertStatement& statement) const {
        return statement.execute == nullptr;
    }
    bool operator()(const tsql::DropStatement& statement) const {
        return statement.kind == tsql::ObjectKind::Table ||
               statement.kind == tsql::ObjectKind::Index;
    }
    template <ScriptStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return false;
    }
    template <FlowStatement Node>
    bool operator()(const Node& /*statement*/) const {
        return false;
    }
};

ValuePlan ofValue(const BoundExpression& value, const Binder& binder) {
    ValuePlan plan;
    plan.type = value.type;
    if (const Value* constant = value.constant()) {
        plan.constant = *constant;
    } else {
        plan.sql = sqlOf(sql::Query{sql::one(value.tree, {})});
    }
    plan.values = binder.boundValues();
    return plan;
}

}  // namespace

ResultColumn resultColumn(const OutputColumn& output) {
    ResultColumn result;
    result.name = output.name;
    result.type = output.value.type;
    result.nullable = output.value.nullable;
    if (output.value.column == nullptr) return result;
    const Column& column = *output.value.column;
    result.baseTable = output.value.table->name;
    result.baseColumn = column.name;
    result.key = column.keyOrdinal > 0;
    result.identity = column.identity.has_value();
    result.rowVersion = column.isRowVersion();
    result.computed = column.computed;
    return result;
}

bool isTranslated(const tsql::Statement& statement) {
    return std::visit(IsPlanned(), statement.node);
}

const tsql::ObjectName* tableMadeBy(const tsql::SelectStatement& statement) {
    const std::vector<tsql::QueryTerm>& terms = statement.query->terms;
    const auto* first = terms.empty() ? nullptr : std::get_if<tsql::Select>(&terms.front().node);
    return first != nullptr && first->into ? &*first->into : nullptr;
}

bool isPlainQuery(const tsql::Statement& statement) {
    const auto* query = std::get_if<tsql::SelectStatement>(&statement.node);
    return query != nullptr && tableMadeBy(*query) == nullptr;
}

StatementPlan translate(const tsql::Statement& statement, const NameScope& names,
                        Constants constants) {
    try {
        return std::visit(Dispatch{names, statement.line, constants}, statement.node);
    } catch (const tsql::ServerError& error) {
        throw error.at(statement.line);
    }
}

StatementPlan translateCursor(const tsql::Query& query, const NameScope& names) {
    Binder binder(names);
    std::vector<std::string> rowTables;
    BoundQuery bound;
    try {
        bound = binder.cursorQuery(query, rowTables);
    } catch (const tsql::ServerError& error) {
        throw error.at(query.line);
    }
    QueryPlan plan = queryPlan(bound);
    plan.rowTables = std::move(rowTables);
    return finished(std::move(plan), binder);
}

ValuePlan translateValue(const tsql::Expression& expression, const tsql::TypeSpec& type,
                         const NameScope& names) {
    Binder binder(names);
    Scope scope;
    const BoundExpression value =
        binder.convertTo(binder.value(expression, scope), type, expression.line);
    return ofValue(value, binder);
}

ValuePlan translateValue(const tsql::Expression& expression, const NameScope& names) {
    Binder binder(names);
    Scope scope;
    return ofValue(binder.value(expression, scope), binder);
}

ValuePlan translateCondition(const tsql::Expression& condition, const NameScope& names) {
    Binder binder(names);
    Scope scope;
    sql::Expression holds =
        sql::Unary{sql::UnaryOperator::IsTrue, binder.condition(condition, scope)};
    return ofValue(BoundExpression::expression(std::move(holds), {tsql::SqlType::Int}, false),
                   binder);
}

}  // namespace kap::engine
