#include <utility>

#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

std::optional<TopClause> Parser::optionalTop() {
    if (!atKeyword("TOP")) return std::nullopt;
    return topClause();
}

ValueOrDefault Parser::valueOrDefault() {
    if (acceptKeyword("DEFAULT")) return {nullptr};
    return {value()};
}

Statement::Node Parser::insertStatement() {
    InsertStatement result;
    refuseKeyword("TOP", "INSERT TOP");
    acceptKeyword("INTO");
    result.table = objectName();
    if (atOperator("(") && !atQuery()) result.columns = nameList();
    refuseKeyword("OUTPUT", "OUTPUT");
    if (acceptKeyword("DEFAULT")) {
        expectKeyword("VALUES");
        result.defaultValues = true;
    } else if (acceptKeyword("VALUES")) {
        do {
            std::vector<ValueOrDefault> row;
            expectOperator("(");
            do {
                row.push_back(valueOrDefault());
            } while (acceptOperator(","));
            expectOperator(")");
            result.rows.push_back(std::move(row));
        } while (acceptOperator(","));
    } else if (atKeyword("SELECT") || atQuery()) {
        result.query = query();
    } else {
        if (atKeyword("EXEC") || atKeyword("EXECUTE")) refuse("INSERT EXECUTE");
        unexpected();
    }
    return result;
}

Statement::Node Parser::updateStatement() {
    UpdateStatement result;
    refuseKeyword("STATISTICS", "UPDATE STATISTICS");
    result.top = optionalTop();
    result.table = objectName();
    tableHints();
    expectKeyword("SET");
    do {
        if (peek().kind == TokenKind::Variable) refuse("SET @variable = in UPDATE");
        Assignment assignment{objectName(), {}};
        expectOperator("=");
        assignment.value = valueOrDefault();
        result.assignments.push_back(std::move(assignment));
    } while (acceptOperator(","));
    refuseKeyword("OUTPUT", "OUTPUT");
    if (atKeyword("FROM")) result.from = fromClause();
    if (acceptKeyword("WHERE")) {
        refuseKeyword("CURRENT", "WHERE CURRENT OF");
        result.where = condition();
    }
    refuseKeyword("OPTION", "OPTION");
    return result;
}

Statement::Node Parser::deleteStatement() {
    DeleteStatement result;
    result.top = optionalTop();
    acceptKeyword("FROM");
    result.table = objectName();
    tableHints();
    refuseKeyword("OUTPUT", "OUTPUT");
    if (atKeyword("FROM")) result.from = fromClause();
    if (acceptKeyword("WHERE")) {
        refuseKeyword("CURRENT", "WHERE CURRENT OF");
        result.where = condition();
    }
    refuseKeyword("OPTION", "OPTION");
    return result;
}

}  // namespace kap::tsql
