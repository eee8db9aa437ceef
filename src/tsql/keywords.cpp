#include "tsql/keywords.hpp"

#include <algorithm>
#include <array>

#include "base/ascii.hpp"

namespace kap::tsql {

namespace {

// Sorted, so that a word is found by bisection.
constexpr std::array kReserved = std::to_array<std::string_view>({"ADD",
                                                                  "ALL",
                                                                  "ALTER",
                                                                  "AND",
                                                                  "ANY",
                                                                  "AS",
                                                                  "ASC",
                                                                  "AUTHORIZATION",
                                                                  "BACKUP",
                                                                  "BEGIN",
                                                                  "BETWEEN",
                                                                  "BREAK",
                                                                  "BROWSE",
                                                                  "BULK",
                                                                  "BY",
                                                                  "CASCADE",
                                                                  "CASE",
                                                                  "CHECK",
                                                                  "CHECKPOINT",
                                                                  "CLOSE",
                                                                  "CLUSTERED",
                                                                  "COALESCE",
                                                                  "COLLATE",
                                                                  "COLUMN",
                                                                  "COMMIT",
                                                                  "COMPUTE",
                                                                  "CONSTRAINT",
                                                                  "CONTAINS",
                                                                  "CONTAINSTABLE",
                                                                  "CONTINUE",
                                                                  "CONVERT",
                                                                  "CREATE",
                                                                  "CROSS",
                                                                  "CURRENT",
                                                                  "CURRENT_DATE",
                                                                  "CURRENT_TIME",
                                                                  "CURRENT_TIMESTAMP",
                                                                  "CURRENT_USER",
                                                                  "CURSOR",
                                                                  "DATABASE",
                                                                  "DBCC",
                                                                  "DEALLOCATE",
                                                                  "DECLARE",
                                                                  "DEFAULT",
                                                                  "DELETE",
                                                                  "DENY",
                                                                  "DESC",
                                                                  "DISK",
                                                                  "DISTINCT",
                                                                  "DISTRIBUTED",
                                                                  "DOUBLE",
                                                                  "DROP",
                                                                  "DUMP",
                                                                  "ELSE",
                                                                  "END",
                                                                  "ERRLVL",
                                                                  "ESCAPE",
                                                                  "EXCEPT",
                                                                  "EXEC",
                                                                  "EXECUTE",
                                                                  "EXISTS",
                                                                  "EXIT",
                                                                  "EXTERNAL",
                                                                  "FETCH",
                                                                  "FILE",
                                                                  "FILLFACTOR",
                                                                  "FOR",
                                                                  "FOREIGN",
                                                                  "FREETEXT",
                                                                  "FREETEXTTABLE",
                                                                  "FROM",
                                                                  "FULL",
                                                                  "FUNCTION",
                                                                  "GOTO",
                                                                  "GRANT",
                                                                  "GROUP",
                                                                  "HAVING",
                                                                  "HOLDLOCK",
                                                                  "IDENTITY",
                                                                  "IDENTITYCOL",
                                                                  "IDENTITY_INSERT",
                                                                  "IF",
                                                                  "IN",
                                                                  "INDEX",
                                                                  "INNER",
                                                                  "INSERT",
                                                                  "INTERSECT",
                                                                  "INTO",
                                                                  "IS",
                                                                  "JOIN",
                                                                  "KEY",
                                                                  "KILL",
                                                                  "LEFT",
                                                                  "LIKE",
                                                                  "LINENO",
                                                                  "LOAD",
                                                                  "MERGE",
                                                                  "NATIONAL",
                                                                  "NOCHECK",
                                                                  "NONCLUSTERED",
                                                                  "NOT",
                                                                  "NULL",
                                                                  "NULLIF",
                                                                  "OF",
                                                                  "OFF",
                                                                  "OFFSETS",
                                                                  "ON",
                                                                  "OPEN",
                                                                  "OPENDATASOURCE",
                                                                  "OPENQUERY",
                                                                  "OPENROWSET",
                                                                  "OPENXML",
                                                                  "OPTION",
                                                                  "OR",
                                                                  "ORDER",
                                                                  "OUTER",
                                                                  "OVER",
                                                                  "PERCENT",
                                                                  "PIVOT",
                                                                  "PLAN",
                                                                  "PRIMARY",
                                                                  "PRINT",
                                                                  "PROC",
                                                                  "PROCEDURE",
                                                                  "PUBLIC",
                                                                  "RAISERROR",
                                                                  "READ",
                                                                  "READTEXT",
                                                                  "RECONFIGURE",
                                                                  "REFERENCES",
                                                                  "REPLICATION",
                                                                  "RESTORE",
                                                                  "RESTRICT",
                                                                  "RETURN",
                                                                  "REVERT",
                                                                  "REVOKE",
                                                                  "RIGHT",
                                                                  "ROLLBACK",
                                                                  "ROWCOUNT",
                                                                  "ROWGUIDCOL",
                                                                  "RULE",
                                                                  "SAVE",
                                                                  "SCHEMA",
                                                                  "SECURITYAUDIT",
                                                                  "SELECT",
                                                                  "SESSION_USER",
                                                                  "SET",
                                                                  "SETUSER",
                                                                  "SHUTDOWN",
                                                                  "SOME",
                                                                  "STATISTICS",
                                                                  "SYSTEM_USER",
                                                                  "TABLE",
                                                                  "TABLESAMPLE",
                                                                  "TEXTSIZE",
                                                                  "THEN",
                                                                  "TO",
                                                                  "TOP",
                                                                  "TRAN",
                                                                  "TRANSACTION",
                                                                  "TRIGGER",
                                                                  "TRUNCATE",
                                                                  "TRY_CONVERT",
                                                                  "TSEQUAL",
                                                                  "UNION",
                                                                  "UNIQUE",
                                                                  "UNPIVOT",
                                                                  "UPDATE",
                                                                  "UPDATETEXT",
                                                                  "USE",
                                                                  "USER",
                                                                  "VALUES",
                                                                  "VARYING",
                                                                  "VIEW",
                                                                  "WAITFOR",
                                                                  "WHEN",
                                                                  "WHERE",
                                                                  "WHILE",
                                                                  "WITH",
                                                                  "WRITETEXT"});

static_assert(std::is_sorted(kReserved.begin(), kReserved.end()));

constexpr std::size_t kLetters = 26;

// Where the words that begin with each letter start; behind the last letter, the end.
constexpr std::array<std::size_t, kLetters + 1> kFirstOf = [] {
    std::array<std::size_t, kLetters + 1> first{};
    for (std::size_t letter = 0; letter <= kLetters; ++letter) {
        while (first[letter] < kReserved.size() &&
               static_cast<std::size_t>(kReserved[first[letter]].front() - 'A') < letter)
            ++first[letter];
    }
    return first;
}();

}  // namespace

// Asked of nearly every word of a script.
bool isReserved(std::string_view word) {
    if (word.empty()) return false;
    const auto letter = static_cast<std::size_t>((word.front() & ~0x20) - 'A');
    if (letter >= kLetters) return false;
    for (std::size_t i = kFirstOf[letter]; i < kFirstOf[letter + 1]; ++i) {
        if (kReserved[i].size() == word.size() && equalsIgnoringCase(kReserved[i], word)) {
            return true;
        }
    }
    return false;
}

}  // namespace kap::tsql
