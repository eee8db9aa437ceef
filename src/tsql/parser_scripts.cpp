#include <array>
#include <utility>

#include "tsql/keywords.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::tsql {

Script Parser::script() {
    Script result;
    while (acceptOperator(";")) {
    }
    while (!atEnd()) {
        result.push_back(statement());
        while (acceptOperator(";")) {
        }
    }
    return result;
}

Statement Parser::statement() {
    const int line = peek().line;
    deepest_ = 0;
    if (atKeyword("SELECT") || atQuery()) return {SelectStatement{query()}, line};
    if (acceptKeyword("INSERT")) return {insertStatement(), line};
    if (acceptKeyword("UPDATE")) return {updateStatement(), line};
    if (acceptKeyword("DELETE")) return {deleteStatement(), line};
    if (acceptKeyword("CREATE")) return {createStatement(), line};
    if (acceptKeyword("DROP")) return {dropStatement(), line};
    const bool begins = atKeyword("BEGIN") && (atKeyword("TRAN", 1) || atKeyword("TRANSACTION", 1));
    if (begins) return {transactionStatement(TransactionAction::Begin), line};
    if (atKeyword("COMMIT")) return {transactionStatement(TransactionAction::Commit), line};
    if (atKeyword("ROLLBACK")) return {transactionStatement(TransactionAction::Rollback), line};
    unknownStatement();
}

Statement::Node Parser::transactionStatement(TransactionAction action) {
    TransactionStatement result{action, ""};
    next();
    const bool named = acceptKeyword("TRAN") || acceptKeyword("TRANSACTION");
    if (!named) {
        acceptKeyword("WORK");
        return result;
    }
    if (peek().kind == TokenKind::Variable) refuse("transaction name in a variable");
    if (atName()) result.name = name();
    return result;
}

void Parser::unknownStatement() {
    static constexpr std::array kKnown{
        "ALTER",    "BACKUP",    "BEGIN",       "BREAK",    "BULK",     "CHECKPOINT", "CLOSE",
        "CONTINUE", "DBCC",      "DEALLOCATE",  "DECLARE",  "DENY",     "EXEC",       "EXECUTE",
        "FETCH",    "GOTO",      "GRANT",       "IF",       "KILL",     "MERGE",      "OPEN",
        "PRINT",    "RAISERROR", "RECONFIGURE", "RESTORE",  "RETURN",   "REVERT",     "REVOKE",
        "SAVE",     "SET",       "SETUSER",     "SHUTDOWN", "TRUNCATE", "USE",        "WAITFOR",
        "WHILE",    "WITH"};
    for (const char* word : kKnown)
        refuseKeyword(word, word);
    unexpected();
}

}  // namespace kap::tsql
