#pragma once

#include <array>
#include <string_view>

namespace kap::cli {

// The words of the dialect that are completed and coloured.
inline constexpr auto kKeyWords = std::to_array<std::string_view>(
    {"ADD",        "ALL",       "ALTER",      "AND",     "AS",       "ASC",         "BEGIN",
     "BETWEEN",    "BY",        "CASE",       "CAST",    "CHECK",    "COLUMN",      "COMMIT",
     "CONSTRAINT", "CONVERT",   "COUNT",      "CREATE",  "CROSS",    "DATEADD",     "DATEDIFF",
     "DECLARE",    "DEFAULT",   "DELETE",     "DESC",    "DISTINCT", "DROP",        "ELSE",
     "END",        "EXEC",      "EXISTS",     "FOREIGN", "FROM",     "FULL",        "FUNCTION",
     "GETDATE()",  "GO",        "GROUP",      "HAVING",  "IDENTITY", "IF",          "IN",
     "INDEX",      "INNER",     "INSERT",     "INTO",    "IS",       "ISNULL",      "JOIN",
     "KEY",        "LEFT",      "LIKE",       "MERGE",   "NOT",      "NULL",        "ON",
     "OR",         "ORDER",     "OUTER",      "OUTPUT",  "OVER",     "PARTITION",   "PRIMARY",
     "PRINT",      "PROCEDURE", "REFERENCES", "RETURN",  "RIGHT",    "ROLLBACK",    "SELECT",
     "SET",        "SUM",       "TABLE",      "THEN",    "TOP",      "TRANSACTION", "TRIGGER",
     "TRUNCATE",   "UNION",     "UNIQUE",     "UPDATE",  "VALUES",   "VIEW",        "WHEN",
     "WHERE",      "WHILE",     "WITH"});

}  // namespace kap::cli
