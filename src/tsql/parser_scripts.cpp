#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/keywords.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

Script Parser::script() {
    constexpr std::size_t kUsualTokens = 12;  // of a statement
    Script result;
    result.reserve(tokens_.size() / kUsualTokens + 1);
    while (atNextStatement()) {
        result.push_back(nextStatement());
    }
    return result;
}

bool Parser::atNextStatement() {
    while (acceptOperator(";")) {
    }
    return !atEnd();
}

Statement Parser::nextStatement() {
    refuseServersStatement();
    // The first statement of a batch may be a procedure's name alone.
    const bool statementWord = atKeyword("TRIGGER", 1) || atKeyword("THROW");
    if (std::exchange(first_, false) && atAlias() && !statementWord) {
        const int line = peek().line;
        return {procedureCall(), line};
    }
    return statementOfSeveral();
}

// WITH begins a statement only behind a semicolon, as it may also belong to the one before.
Statement Parser::statementOfSeveral() {
    Statement result = statement();
    if (atKeyword("WITH")) {
        throw ServerError(Message::SyntaxNearWith, {}, peek().line);
    }
    return result;
}

Statement Parser::statement() {
    const Level level(*this);
    const int line = peek().line;
    deepest_ = 0;
    refuseServersStatement();
    for (const auto& part :
         {&Parser::dataStatement, &Parser::flowStatement, &Parser::databaseWideStatement}) {
        if (auto node = (this->*part)()) return {std::move(*node), line};
    }
    unknownStatement();
}

std::optional<Statement::Node> Parser::dataStatement() {
    if (atKeyword("SELECT") || atQuery()) return SelectStatement{query()};
    if (atKeyword("WITH")) return withStatement();
    if (acceptKeyword("INSERT")) return insertStatement();
    if (atKeyword("UPDATE") && atKeyword("STATISTICS", 1)) return noEffect("UPDATE STATISTICS");
    if (acceptKeyword("UPDATE")) return updateStatement();
    if (acceptKeyword("DELETE")) return deleteStatement();
    if (acceptKeyword("MERGE")) return mergeStatement();
    if (atKeyword("BULK") && atKeyword("INSERT", 1)) return bulkInsert();
    if (acceptKeyword("TRUNCATE")) {
        expectKeyword("TABLE");
        TruncateStatement truncate{objectName()};
        if (atKeyword("WITH") && atOperator("(", 1)) refuse("TRUNCATE TABLE WITH PARTITIONS");
        return truncate;
    }
    if (acceptKeyword("EXEC") || acceptKeyword("EXECUTE")) return executeStatement();
    return std::nullopt;
}

std::optional<Statement::Node> Parser::flowStatement() {
    if (acceptKeyword("DECLARE")) return declareStatement();
    if (acceptKeyword("SET")) return setStatement();
    if (acceptKeyword("IF")) return ifStatement();
    if (acceptKeyword("WHILE")) return whileStatement();
    if (atKeyword("BEGIN")) return beginStatement();
    if (atKeyword("COMMIT")) return transactionStatement(TransactionAction::Commit);
    if (atKeyword("ROLLBACK")) return transactionStatement(TransactionAction::Rollback);
    if (atKeyword("SAVE")) return transactionStatement(TransactionAction::Save);
    if (acceptKeyword("RETURN")) return returnStatement();
    if (acceptKeyword("PRINT")) return PrintStatement{value()};
    if (acceptKeyword("RAISERROR")) return raiserrorStatement();
    if (atKeyword("THROW")) return throwStatement();
    if (acceptKeyword("WAITFOR")) return waitStatement();
    if (acceptKeyword("GOTO")) return GotoStatement{name()};
    if (acceptKeyword("OPEN")) return openCursor(CursorAction::Open);
    if (acceptKeyword("CLOSE")) return openCursor(CursorAction::Close);
    if (acceptKeyword("DEALLOCATE")) return openCursor(CursorAction::Deallocate);
    if (acceptKeyword("FETCH")) return fetchStatement();
    if (atLabel()) {
        LabelStatement label{name()};
        next();
        return label;
    }
    for (const char* word : {"BREAK", "CONTINUE"}) {
        if (!atKeyword(word)) continue;
        const int line = next().line;
        const bool breaks = *word == 'B';
        if (loops_ == 0) {
            throw ServerError(breaks ? Message::BreakOutsideLoop : Message::ContinueOutsideLoop, {},
                              line);
        }
        if (breaks) return BreakStatement{};
        return ContinueStatement{};
    }
    return std::nullopt;
}

std::optional<Statement::Node> Parser::databaseWideStatement() {
    if (acceptKeyword("CREATE")) return createStatement();
    if (acceptKeyword("ALTER")) return alterStatement();
    if (acceptKeyword("DROP")) return dropStatement();
    const bool switches = atKeyword("ENABLE") || atKeyword("DISABLE");
    if (switches && atKeyword("TRIGGER", 1)) return triggerSwitch();
    if (acceptKeyword("USE")) return DatabaseStatement{DatabaseAction::Use, name()};
    if (atKeyword("BACKUP") && atKeyword("DATABASE", 1)) return backupStatement();
    if (atKeyword("DBCC") && atKeyword("CHECKIDENT", 1)) return checkIdentity();
    if (atKeyword("DBCC") && atKeyword("CHECKDB", 1)) {
        skipStatement();
        return CheckStatement{};
    }
    if (atKeyword("DBCC") && atKeyword("USEROPTIONS", 1)) {
        skipStatement();
        return ShowOptionsStatement{};
    }
    for (const char* word : {"GRANT", "DENY", "REVOKE", "CHECKPOINT", "DBCC"}) {
        if (atKeyword(word)) return noEffect(word);
    }
    return std::nullopt;
}

Statement::Node Parser::transactionStatement(TransactionAction action) {
    TransactionStatement result{action, "", ""};
    next();
    const bool named = acceptKeyword("TRAN") || acceptKeyword("TRANSACTION");
    if (!named) {
        if (action == TransactionAction::Save) unexpected();
        acceptKeyword("WORK");
    } else if (peek().kind == TokenKind::Variable) {
        result.variable = next().text;
    } else if (atAlias()) {
        result.name = name();
    } else if (action == TransactionAction::Save) {
        unexpected();
    }
    if (action == TransactionAction::Begin && acceptKeyword("WITH")) {
        expectKeyword("MARK");
        if (peek().kind == TokenKind::Text || peek().kind == TokenKind::NationalText) next();
    }
    if (action == TransactionAction::Commit && atKeyword("WITH") && atOperator("(", 1)) {
        next();
        delayedDurability();
    }
    return result;
}

// WITH (DELAYED_DURABILITY = ON) of COMMIT: what is committed is kept at once here.
void Parser::delayedDurability() {
    expectOperator("(");
    expectKeyword("DELAYED_DURABILITY");
    expectOperator("=");
    if (!acceptKeyword("OFF")) expectKeyword("ON");
    expectOperator(")");
}

void Parser::unknownStatement() {
    static constexpr std::array kKnown{"BACKUP",   "BULK",      "KILL",      "RECONFIGURE",
                                       "RESTORE",  "REVERT",    "SETUSER",   "SHUTDOWN",
                                       "READTEXT", "WRITETEXT", "UPDATETEXT"};
    for (const char* word : kKnown)
        refuseKeyword(word, word);
    unexpected();
}

// Statements end where a word begins another one: the dialect needs no separator.
bool Parser::atStatement() const {
    static constexpr std::array kFirstWords{
        "SELECT",   "INSERT", "UPDATE",     "DELETE", "TRUNCATE",   "EXEC",    "EXECUTE",
        "DECLARE",  "SET",    "IF",         "WHILE",  "BEGIN",      "COMMIT",  "ROLLBACK",
        "MERGE",    "SAVE",   "RETURN",     "PRINT",  "RAISERROR",  "WAITFOR", "GOTO",
        "OPEN",     "CLOSE",  "DEALLOCATE", "FETCH",  "CREATE",     "ALTER",   "DROP",
        "USE",      "GRANT",  "DENY",       "REVOKE", "CHECKPOINT", "DBCC",    "BREAK",
        "CONTINUE", "END",    "ELSE",       "WITH"};
    if (atEnd() || atOperator(";")) return true;
    for (const char* word : kFirstWords) {
        if (atKeyword(word)) return true;
    }
    return atLabel();
}

}  // namespace kap::tsql
