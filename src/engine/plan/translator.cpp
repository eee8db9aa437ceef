#include "engine/plan/translator.hpp"

#include <utility>

#include "engine/plan/statements.hpp"
#include "engine/sqlite/sql_writer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

struct Dispatch {
    const NameScope& names;
    int line;
    Constants constants;

    Translation operator()(const tsql::SelectStatement& statement) const {
        return translateSelect(statement, names, constants);
    }
    Translation operator()(const tsql::InsertStatement& statement) const {
        return translateInsert(statement, line, names, constants);
    }
    Translation operator()(const tsql::UpdateStatement& statement) const {
        return translateUpdate(statement, names, constants);
    }
    Translation operator()(const tsql::DeleteStatement& statement) const {
        return translateDelete(statement, names, constants);
    }
    Translation operator()(const tsql::MergeStatement& statement) const {
        return translateMerge(statement, line, names);
    }
    Translation operator()(const tsql::TruncateStatement& statement) const {
        return translateTruncate(statement, names);
    }
    Translation operator()(const tsql::CreateTableStatement& statement) const {
        return translateCreate(statement, line, names);
    }
    Translation operator()(const tsql::CreateIndexStatement& statement) const {
        return translateIndex(statement, line, names);
    }
    Translation operator()(const tsql::DropStatement& statement) const {
        return translateDrop(statement, line, names);
    }
    template <typename Other>
    Translation operator()(const Other& /*statement*/) const {
        throw tsql::unsupported("this statement here", line);
    }
};

Translation ofValue(const BoundExpression& value, const Binder& binder) {
    Translation result;
    result.kind = StatementKind::Assign;
    if (const Value* constant = value.constant()) {
        result.constant = *constant;
    } else {
        result.sql.push_back("SELECT " + sqlOf(value.tree));
    }
    result.columns.push_back(resultColumn({"", value}));
    finish(result, binder);
    return result;
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
    if (column.computed) {
        // It can be read and not be written, as an expression.
        result.baseTable.clear();
        result.baseColumn.clear();
    }
    return result;
}

bool isTranslated(const tsql::Statement& statement) {
    if (const auto* drop = std::get_if<tsql::DropStatement>(&statement.node)) {
        return drop->kind == tsql::ObjectKind::Table || drop->kind == tsql::ObjectKind::Index;
    }
    if (const auto* insert = std::get_if<tsql::InsertStatement>(&statement.node)) {
        return insert->execute == nullptr;
    }
    return std::holds_alternative<tsql::SelectStatement>(statement.node) ||
           std::holds_alternative<tsql::UpdateStatement>(statement.node) ||
           std::holds_alternative<tsql::DeleteStatement>(statement.node) ||
           std::holds_alternative<tsql::MergeStatement>(statement.node) ||
           std::holds_alternative<tsql::TruncateStatement>(statement.node) ||
           std::holds_alternative<tsql::CreateTableStatement>(statement.node) ||
           std::holds_alternative<tsql::CreateIndexStatement>(statement.node);
}

Translation translate(const tsql::Statement& statement, const NameScope& names,
                      Constants constants) {
    Translation result;
    try {
        result = std::visit(Dispatch{names, statement.line, constants}, statement.node);
    } catch (const tsql::ServerError& error) {
        throw error.at(statement.line);
    }
    result.line = statement.line;
    return result;
}

Translation translateCursor(const tsql::Query& query, const NameScope& names) {
    Binder binder(names);
    Translation result;
    BoundQuery bound;
    try {
        bound = binder.cursorQuery(query, result.rowTables);
    } catch (const tsql::ServerError& error) {
        throw error.at(query.line);
    }
    result.kind = StatementKind::Select;
    result.sql.push_back(std::move(bound.sql));
    for (const OutputColumn& column : bound.columns)
        result.columns.push_back(resultColumn(column));
    result.line = query.line;
    finish(result, binder);
    return result;
}

Translation translateValue(const tsql::Expression& expression, const tsql::TypeSpec& type,
                           const NameScope& names) {
    Binder binder(names);
    Scope scope;
    const BoundExpression value =
        binder.convertTo(binder.value(expression, scope), type, expression.line);
    return ofValue(value, binder);
}

Translation translateValue(const tsql::Expression& expression, const NameScope& names) {
    Binder binder(names);
    Scope scope;
    return ofValue(binder.value(expression, scope), binder);
}

Translation translateCondition(const tsql::Expression& condition, const NameScope& names) {
    Binder binder(names);
    Scope scope;
    sql::Expression holds =
        sql::Unary{sql::UnaryOperator::IsTrue, binder.condition(condition, scope)};
    return ofValue(BoundExpression::expression(std::move(holds), {tsql::SqlType::Int}, false),
                   binder);
}

}  // namespace kap::engine
