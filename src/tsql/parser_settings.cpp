#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// SET, and the statements that administer a server.
namespace kap::tsql {

Statement::Node Parser::setStatement() {
    if (peek().kind != TokenKind::Variable) return setOption();
    const std::string name = variable();
    const bool cursor = atOperator("=") && atKeyword("CURSOR", 1);
    if (cursor || isCursorVariable(name)) return assignCursor(name);
    AssignStatement result{name, nullptr};
    result.value = assignedValue([&] { return VariableReference{name}; });
    return result;
}

// "x += y" is x = x + y.
ExpressionPtr Parser::assignedValue(const std::function<Expression::Node()>& target) {
    static constexpr std::pair<std::string_view, BinaryOperator> kCompound[] = {
        {"+=", BinaryOperator::Add},      {"-=", BinaryOperator::Subtract},
        {"*=", BinaryOperator::Multiply}, {"/=", BinaryOperator::Divide},
        {"%=", BinaryOperator::Modulo},   {"&=", BinaryOperator::BitAnd},
        {"|=", BinaryOperator::BitOr},    {"^=", BinaryOperator::BitXor}};
    for (const auto& [symbol, op] : kCompound) {
        if (!atOperator(symbol)) continue;
        const int line = next().line;
        ExpressionPtr left = make(target(), line);
        ExpressionPtr right = value();
        const int below = right->depth;
        return make(BinaryExpression{op, std::move(left), std::move(right)}, line, below);
    }
    expectOperator("=");
    return value();
}

// SET option value; several options may share an ON or OFF.
Statement::Node Parser::setOption() {
    SetOptionStatement result;
    if (acceptKeyword("IDENTITY_INSERT")) {
        result.options.emplace_back("IDENTITY_INSERT");
        result.table = objectName();
        result.value = asciiUpper(next().text);
        return result;
    }
    if (acceptKeyword("TRANSACTION")) {
        expectKeyword("ISOLATION");
        expectKeyword("LEVEL");
        result.options.emplace_back("TRANSACTION ISOLATION LEVEL");
        const bool two = atKeyword("READ") || atKeyword("REPEATABLE");
        if (peek().kind != TokenKind::Word) unexpected();
        result.value = asciiUpper(next().text);
        if (!two) return result;
        if (peek().kind != TokenKind::Word) unexpected();
        result.value += " " + asciiUpper(next().text);
        return result;
    }
    for (const char* option : {"STATISTICS", "DEADLOCK_PRIORITY", "QUERY_GOVERNOR_COST_LIMIT"}) {
        if (!acceptKeyword(option)) continue;
        skipStatement();
        return NoEffectStatement{std::string("SET ") + option};
    }
    for (const char* option : {"FIPS_FLAGGER", "OFFSETS"})
        refuseKeyword(option, option);
    do {
        if (peek().kind != TokenKind::Word) unexpected();
        result.options.push_back(asciiUpper(next().text));
    } while (acceptOperator(","));
    const bool number =
        result.options.front() == "ROWCOUNT" || result.options.front() == "LOCK_TIMEOUT" ||
        result.options.front() == "DATEFIRST" || result.options.front() == "TEXTSIZE";
    if (result.options.front() == "CONTEXT_INFO") {
        // Bytes as they are, or a variable.
        if (atKeyword("NULL")) unexpected();
        result.number = value();
    } else if (number) {
        result.number = value();
    } else if (atEnd()) {
        unexpected();
    } else {
        result.value = asciiUpper(next().text);
    }
    return result;
}

Statement::Node Parser::backupStatement() {
    BackupStatement result;
    next();
    next();
    name();
    expectKeyword("TO");
    expectKeyword("DISK");
    expectOperator("=");
    result.file = value();
    if (!acceptKeyword("WITH")) return result;
    do {
        result.replace = result.replace || atKeyword("INIT") || atKeyword("FORMAT");
        next();
        if (acceptOperator("=")) value();
    } while (acceptOperator(","));
    return result;
}

// DBCC CHECKIDENT ('table', RESEED, 10): the table as a text or as a name.
Statement::Node Parser::checkIdentity() {
    CheckIdentityStatement result;
    next();
    next();
    expectOperator("(");
    const Token& table = peek();
    if (table.kind == TokenKind::Text || table.kind == TokenKind::NationalText) {
        result.table = parseObjectName(next().text);
        result.table.line = table.line;
    } else {
        result.table = objectName();
    }
    if (acceptOperator(",")) {
        result.reseeds = !acceptKeyword("NORESEED");
        if (result.reseeds) expectKeyword("RESEED");
        if (result.reseeds && acceptOperator(",")) result.value = value();
    }
    expectOperator(")");
    if (atKeyword("WITH") && atKeyword("NO_INFOMSGS", 1)) {
        next();
        next();
        result.quietly = true;
    }
    return result;
}

Statement::Node Parser::noEffect(std::string what) {
    skipStatement();
    return NoEffectStatement{std::move(what)};
}

// Everything up to the next statement. GRANT SELECT, INSERT ON t holds words that begin statements.
void Parser::skipStatement() {
    static constexpr std::array kBefore{"GRANT",         "DENY", "REVOKE", "FOR",
                                        "CONFIGURATION", "WITH", ",",      "("};
    next();
    while (!atEnd() && !atOperator(";")) {
        const std::string& before = tokens_[position_ - 1].text;
        const bool goesOn =
            atKeyword("WITH") || std::any_of(kBefore.begin(), kBefore.end(), [&](const char* word) {
                return equalsIgnoringCase(before, word);
            });
        if (atStatement() && !goesOn) return;
        next();
    }
}

Statement::Node Parser::databaseStatement(DatabaseAction action) {
    DatabaseStatement result{action, ""};
    do {
        result.name = acceptKeyword("CURRENT") ? std::string() : name();
    } while (acceptOperator(","));
    const bool alters = action == DatabaseAction::Alter;
    std::optional<SetOptionStatement> option;
    while (!atStatement() || atKeyword("WITH") || (alters && atKeyword("SET"))) {
        if (atKeyword("RECURSIVE_TRIGGERS") && (atKeyword("ON", 1) || atKeyword("OFF", 1))) {
            option.emplace();
            option->options = {"RECURSIVE_TRIGGERS"};
            option->value = atKeyword("ON", 1) ? "ON" : "OFF";
        } else if (atKeyword("COMPATIBILITY_LEVEL") && atOperator("=", 1)) {
            option.emplace();
            option->options = {"COMPATIBILITY_LEVEL"};
            option->value = peek(2).text;
        } else if (atKeyword("WITH") && atKeyword("ROLLBACK", 1)) {
            next();
        }
        next();
    }
    if (option) return std::move(*option);
    return result;
}

}  // namespace kap::tsql
