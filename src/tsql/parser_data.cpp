#include <utility>

#include "base/restored.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

// Statements that write take their TOP in brackets only.
std::optional<TopClause> Parser::optionalTop() {
    if (!atKeyword("TOP")) return std::nullopt;
    if (!atOperator("(", 1)) {
        next();
        unexpected();
    }
    return topClause();
}

ValueOrDefault Parser::valueOrDefault() {
    if (acceptKeyword("DEFAULT")) return {nullptr};
    return {value()};
}

// OUTPUT inserted.a, deleted.b [INTO table (columns)].
std::optional<OutputClause> Parser::outputClause() {
    if (!acceptKeyword("OUTPUT")) return std::nullopt;
    OutputClause result;
    const std::size_t draws = draws_;
    do {
        result.items.push_back(selectItem());
    } while (acceptOperator(","));
    refuseDraws(draws, Message::DrawInClause);
    if (!acceptKeyword("INTO")) return result;
    result.into = tableName();
    if (atOperator("(") && !atQuery()) result.columns = nameList();
    return result;
}

// WITH names queries for the statement that follows.
Statement::Node Parser::withStatement() {
    const std::size_t start = position_;
    std::vector<CommonTable> tables = commonTables();
    if (acceptKeyword("INSERT")) {
        InsertStatement insert = insertStatement();
        insert.commonTables = std::move(tables);
        return insert;
    }
    if (acceptKeyword("UPDATE")) {
        UpdateStatement update = updateStatement();
        update.commonTables = std::move(tables);
        return update;
    }
    if (acceptKeyword("DELETE")) {
        DeleteStatement erase = deleteStatement();
        erase.commonTables = std::move(tables);
        return erase;
    }
    if (acceptKeyword("MERGE")) {
        MergeStatement merge = mergeStatement();
        merge.commonTables = std::move(tables);
        return merge;
    }
    if (!atKeyword("SELECT") && !atQuery()) unexpected();
    position_ = start;
    return SelectStatement{query()};
}

// The rows that a trigger sees are not to be written.
ObjectName Parser::writtenName() {
    refuseServersTarget();
    ObjectName result = tableName();
    const bool seen = inTrigger_ && result.parts.size() == 1 &&
                      (equalsIgnoringCase(result.last(), "inserted") ||
                       equalsIgnoringCase(result.last(), "deleted"));
    if (!seen) return result;
    throw ServerError(Message::LogicalTableNotUpdatable, {}, result.line);
}

InsertStatement Parser::insertStatement() {
    InsertStatement result;
    result.top = optionalTop();
    acceptKeyword("INTO");
    result.table = writtenName();
    tableHints(HintsStand::BehindWith);
    if (atOperator("(") && !atQuery()) result.columns = nameList();
    result.output = outputClause();
    if (acceptKeyword("DEFAULT")) {
        expectKeyword("VALUES");
        result.defaultValues = true;
    } else if (acceptKeyword("VALUES")) {
        insertRows(result);
    } else if (atKeyword("SELECT") || atKeyword("WITH") || atQuery()) {
        result.query = query();
        refuseRowsAsText(*result.query, "INSERT");
    } else if (acceptKeyword("EXEC") || acceptKeyword("EXECUTE")) {
        result.execute = std::make_unique<ExecuteStatement>(executeStatement());
    } else {
        unexpected();
    }
    (void)queryHints();
    return result;
}

void Parser::insertRows(InsertStatement& insert) {
    do {
        std::vector<ValueOrDefault> row;
        expectOperator("(");
        do {
            row.push_back(valueOrDefault());
        } while (acceptOperator(","));
        expectOperator(")");
        insert.rows.push_back(std::move(row));
    } while (acceptOperator(","));
}

Assignment Parser::assignment() {
    Assignment result;
    if (peek().kind == TokenKind::Variable) {
        result.variable = variable();
        const bool column = atOperator("=") && peek(1).kind != TokenKind::Variable &&
                            (atOperator("=", 2) || (atOperator(".", 2) && atOperator("=", 4)));
        if (!column) {
            const std::string& name = result.variable;
            result.value = {assignedValue([&] { return VariableReference{name}; })};
            return result;
        }
        next();
    }
    result.column = objectName();
    if (result.column.parts.size() > 1 && equalsIgnoringCase(result.column.last(), "WRITE") &&
        atOperator("(")) {
        result.value = {writtenPart(result.column)};
        return result;
    }
    if (atOperator("=") && atKeyword("DEFAULT", 1)) {
        next();
        next();
        return result;
    }
    result.value = {assignedValue([&] { return ColumnReference{result.column}; })};
    return result;
}

// column.WRITE(text, offset, length): what the column is to be, as a function of what it is.
ExpressionPtr Parser::writtenPart(ObjectName& column) {
    column.parts.pop_back();
    const int line = column.line;
    expectOperator("(");
    ExpressionPtr part = value();
    expectOperator(",");
    ExpressionPtr offset = value();
    expectOperator(",");
    ExpressionPtr length = value();
    expectOperator(")");
    return invoked(kWriteMethod, line, make(ColumnReference{column}, line), std::move(part),
                   std::move(offset), std::move(length));
}

UpdateStatement Parser::updateStatement() {
    UpdateStatement result;
    result.top = optionalTop();
    result.table = writtenName();
    tableHints(HintsStand::Anywhere);
    expectKeyword("SET");
    {
        const Restored order(orderRefused_, true);
        do {
            result.assignments.push_back(assignment());
        } while (acceptOperator(","));
    }
    result.output = outputClause();
    const std::size_t draws = draws_;
    if (atKeyword("FROM")) result.from = fromClause();
    result.where = writtenRows(result.assignments);
    refuseDraws(draws, Message::DrawInClause);
    result.maxRecursion = queryHints();
    return result;
}

// WHERE of UPDATE and DELETE: a condition, or the row on which a cursor stands. Null without WHERE.
ExpressionPtr Parser::writtenRows(const std::vector<Assignment>& assignments) {
    if (!acceptKeyword("WHERE")) return nullptr;
    if (!atKeyword("CURRENT") || !atKeyword("OF", 1)) return condition();
    const int line = next().line;
    next();
    acceptKeyword("GLOBAL");
    CurrentOfPredicate result{cursorName(), {}};
    for (const Assignment& each : assignments) {
        if (!each.column.parts.empty()) result.columns.push_back(each.column.last());
    }
    return make(std::move(result), line);
}

DeleteStatement Parser::deleteStatement() {
    DeleteStatement result;
    result.top = optionalTop();
    acceptKeyword("FROM");
    result.table = writtenName();
    tableHints(HintsStand::Anywhere);
    result.output = outputClause();
    const std::size_t draws = draws_;
    if (atKeyword("FROM")) result.from = fromClause();
    result.where = writtenRows({});
    refuseDraws(draws, Message::DrawInClause);
    result.maxRecursion = queryHints();
    return result;
}

}  // namespace kap::tsql
