#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// Variables, blocks, branches and loops, and what ends or reports within them.
namespace kap::tsql {

Statement::Node Parser::declareStatement() {
    if (atName() &&
        (atKeyword("CURSOR", 1) || atKeyword("INSENSITIVE", 1) || atKeyword("SCROLL", 1))) {
        return declareCursor(name());
    }
    DeclareStatement result;
    do {
        const int line = peek().line;
        const std::string name = newVariable();
        if (name.compare(0, 2, "@@") == 0) throw syntaxError(name, line);
        acceptKeyword("AS");
        if (acceptKeyword("TABLE")) {
            CreateTableStatement& table = result.tables.emplace_back();
            table.table = {{name}, line};
            tableBody(table);
            continue;
        }
        if (acceptKeyword("CURSOR")) {
            cursorVariables_.push_back(name);
            result.cursors.push_back(name);
            continue;
        }
        if (auto table = tableType(name)) {
            table->table.line = line;
            result.tables.push_back(std::move(*table));
            continue;
        }
        DeclaredVariable& declared = result.variables.emplace_back();
        declared.name = name;
        declared.line = line;
        declared.type = type(name, static_cast<int>(result.variables.size()));
        if (acceptOperator("=")) declared.initial = value();
    } while (acceptOperator(","));
    return result;
}

StatementPtr Parser::subStatement() {
    while (acceptOperator(";")) {
    }
    if (atEnd()) unexpected();
    return std::make_unique<Statement>(statement());
}

Statement::Node Parser::ifStatement() {
    IfStatement result;
    result.condition = condition();
    result.then = subStatement();
    std::size_t ahead = 0;
    while (atOperator(";", ahead))
        ++ahead;
    if (!atKeyword("ELSE", ahead)) return result;
    for (std::size_t i = 0; i <= ahead; ++i)
        next();
    result.otherwise = subStatement();
    return result;
}

Statement::Node Parser::whileStatement() {
    WhileStatement result;
    result.condition = condition();
    ++loops_;
    result.body = subStatement();
    --loops_;
    return result;
}

Statement::Node Parser::beginStatement() {
    if (atKeyword("TRAN", 1) || atKeyword("TRANSACTION", 1)) {
        return transactionStatement(TransactionAction::Begin);
    }
    if (atKeyword("DISTRIBUTED", 1)) refuse("BEGIN DISTRIBUTED TRANSACTION");
    next();
    if (atKeyword("TRY")) return tryStatement();
    BlockStatement block{statementsUntilEnd()};
    if (block.statements.empty()) unexpected();
    expectKeyword("END");
    return block;
}

Script Parser::statementsUntilEnd() {
    Script result;
    while (true) {
        while (acceptOperator(";")) {
        }
        if (atKeyword("END")) {
            refuseServersStatement();
            return result;
        }
        if (atEnd()) unexpected();
        result.push_back(statementOfSeveral());
    }
}

Statement::Node Parser::tryStatement() {
    TryStatement result;
    next();
    result.body = statementsUntilEnd();
    next();
    expectKeyword("TRY");
    acceptOperator(";");
    expectKeyword("BEGIN");
    expectKeyword("CATCH");
    result.handler = statementsUntilEnd();
    next();
    expectKeyword("CATCH");
    return result;
}

Statement::Node Parser::returnStatement() {
    ReturnStatement result;
    const std::size_t draws = draws_;
    if (!atStatement()) result.value = value();
    refuseDraws(draws, Message::DrawNotHere);
    return result;
}

// RAISERROR (message, severity, state, arguments) WITH options; the older form has a number and a
// text without brackets.
Statement::Node Parser::raiserrorStatement() {
    RaiserrorStatement result;
    if (!acceptOperator("(")) {
        if (peek().kind != TokenKind::Integer) unexpected();
        result.message = value();
        if (!atStatement()) result.arguments.push_back(value());
        return result;
    }
    result.message = value();
    if (acceptOperator(",")) result.severity = value();
    if (acceptOperator(",")) result.state = value();
    while (acceptOperator(","))
        result.arguments.push_back(value());
    expectOperator(")");
    if (!result.state) unexpected();
    if (!acceptKeyword("WITH")) return result;
    do {
        if (acceptKeyword("SETERROR")) {
            result.setError = true;
        } else if (!acceptKeyword("NOWAIT")) {
            expectKeyword("LOG");
        }
    } while (acceptOperator(","));
    return result;
}

Statement::Node Parser::throwStatement() {
    next();
    ThrowStatement result;
    if (atStatement()) return result;
    result.number = value();
    expectOperator(",");
    result.message = value();
    expectOperator(",");
    result.state = value();
    return result;
}

Statement::Node Parser::waitStatement() {
    WaitStatement result;
    if (atOperator("(")) refuse("WAITFOR (RECEIVE)");
    result.until = acceptKeyword("TIME");
    if (!result.until) expectKeyword("DELAY");
    result.time = value();
    return result;
}

}  // namespace kap::tsql
