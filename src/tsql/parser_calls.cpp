#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "tsql/keywords.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// Calls of stored procedures.
namespace kap::tsql {

ExecuteStatement Parser::executeStatement() {
    ExecuteStatement result;
    if (acceptOperator("(")) {
        result.text = value();
        expectOperator(")");
        refuseKeyword("AS", "EXECUTE AS");
        refuseKeyword("AT", "EXECUTE AT");
        callOptions();
        return result;
    }
    refuseKeyword("AS", "EXECUTE AS");
    if (peek().kind == TokenKind::Parameter) {
        std::string mark = parameterMark();
        expectOperator("=");
        result = procedureCall();
        result.resultVariable = std::move(mark);
        return result;
    }
    if (peek().kind != TokenKind::Variable) return procedureCall();
    const std::string name = variable();
    if (acceptOperator("=")) {
        if (peek().kind == TokenKind::Variable) {
            result.procedureVariable = variable();
        } else {
            result = procedureCall();
            result.resultVariable = name;
            return result;
        }
        result.resultVariable = name;
    } else {
        result.procedureVariable = name;
    }
    if (!atStatement()) arguments(result);
    callOptions();
    return result;
}

// Behind an argument by name all others are by name, too.
void Parser::arguments(ExecuteStatement& call) {
    do {
        const int line = peek().line;
        const bool named = !call.arguments.empty() && !call.arguments.back().name.empty();
        call.arguments.push_back(argument());
        if (!named || !call.arguments.back().name.empty()) continue;
        throw ServerError(Message::PositionalAfterNamed,
                          {plain::text(static_cast<std::int64_t>(call.arguments.size()))}, line);
    } while (acceptOperator(","));
}

ExecuteStatement Parser::procedureCall() {
    ExecuteStatement result;
    result.procedure = objectName();
    if (atOperator(";") && peek(1).kind == TokenKind::Integer) refuse("numbered procedures");
    if (!atStatement()) arguments(result);
    callOptions();
    return result;
}

// WITH belongs to a call only with these words behind it.
void Parser::callOptions() {
    if (!atKeyword("WITH")) return;
    if (atKeyword("RESULT", 1)) refuse("EXECUTE WITH RESULT SETS");
    if (!atKeyword("RECOMPILE", 1)) return;
    next();
    next();
}

Argument Parser::argument() {
    Argument result;
    if (peek().kind == TokenKind::Variable && atOperator("=", 1)) {
        result.name = next().text;
        next();
    }
    if (!acceptKeyword("DEFAULT")) result.value = argumentValue();
    result.output = acceptKeyword("OUTPUT") || acceptKeyword("OUT");
    return result;
}

// A constant or a variable, and nothing computed; a bare word is a text.
ExpressionPtr Parser::argumentValue() {
    const Token& token = peek();
    const bool word = token.kind == TokenKind::QuotedName ||
                      (token.kind == TokenKind::Word && !atKeyword("NULL"));
    if (word) {
        if (token.kind == TokenKind::Word && isReserved(token.text) && !atKeyword("ON") &&
            !atKeyword("OFF")) {
            unexpected();
        }
        next();
        return make(Literal{LiteralKind::NationalText, token.text}, token.line);
    }
    return signedValue(Place::Value);
}

}  // namespace kap::tsql
