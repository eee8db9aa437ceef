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
        callOptions(result);
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
    callOptions(result);
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
    result.number = procedureNumber();
    if (!atStatement()) arguments(result);
    callOptions(result);
    return result;
}

// The 2 of p;2.
int Parser::procedureNumber() {
    if (!atOperator(";") || peek(1).kind != TokenKind::Integer) return 1;
    next();
    const Token& token = next();
    const auto number = plain::readInt(token.text);
    constexpr int kMost = 32767;
    if (!number || *number < 1 || *number > kMost) throw syntaxError(token.text, token.line);
    return *number;
}

// WITH belongs to a call only with these words behind it.
void Parser::callOptions(ExecuteStatement& call) {
    if (!atKeyword("WITH")) return;
    if (!atKeyword("RECOMPILE", 1) && !atKeyword("RESULT", 1)) return;
    next();
    do {
        if (acceptKeyword("RECOMPILE")) continue;
        expectKeyword("RESULT");
        expectKeyword("SETS");
        call.resultSets = resultSets();
    } while (acceptOperator(","));
}

// UNDEFINED, NONE, or a list in brackets.
ResultSets Parser::resultSets() {
    ResultSets result;
    if (acceptKeyword("UNDEFINED")) return result;
    result.kind = ResultSets::Kind::None;
    if (acceptKeyword("NONE")) return result;
    result.kind = ResultSets::Kind::Listed;
    expectOperator("(");
    do {
        ResultSets::Set& set = result.sets.emplace_back();
        if (acceptKeyword("AS")) {
            if (atKeyword("FOR")) refuse("WITH RESULT SETS AS FOR XML");
            set.isType = acceptKeyword("TYPE");
            if (!set.isType) expectKeyword("OBJECT");
            set.object = objectName();
            continue;
        }
        expectOperator("(");
        do {
            set.columns.push_back(resultSetColumn(static_cast<int>(set.columns.size()) + 1));
        } while (acceptOperator(","));
        expectOperator(")");
    } while (acceptOperator(","));
    expectOperator(")");
    return result;
}

ResultSetColumn Parser::resultSetColumn(int ordinal) {
    ResultSetColumn result;
    result.name = name();
    result.type = type(result.name, ordinal);
    if (atKeyword("COLLATE")) collation();
    if (acceptKeyword("NOT")) {
        expectKeyword("NULL");
        result.nullable = false;
    } else {
        acceptKeyword("NULL");
    }
    return result;
}

Argument Parser::argument() {
    Argument result;
    if (peek().kind == TokenKind::Variable && atOperator("=", 1)) {
        result.name = next().text;
        next();
    }
    if (peek().kind == TokenKind::Variable && isCursorVariable(peek().text)) {
        const Token& cursor = next();
        result.value = make(VariableReference{cursor.text}, cursor.line);
    } else if (!acceptKeyword("DEFAULT")) {
        result.value = argumentValue();
    }
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
