#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tsql/statements.hpp"

namespace kap::tsql {

// How many levels calls, brackets, conditions and chains of operators may have.
inline constexpr int kMaxNesting = 1200;
// ... and queries within queries, counted through the views and common tables that they read.
inline constexpr int kMaxQueries = 200;

// What a name given by CREATE TYPE or sp_addtype stands for.
struct AliasType {
    TypeSpec type;
    bool nullable = true;
    std::string table = {};  // "(a int, ...)" for a table type; empty otherwise
};

struct ParseOptions {
    int firstLine = 1;
    bool quotedNames = true;     // whether "x" is a name at the start of the script, or a text
    bool marksLiterals = false;  // whether literals tell the places of their tokens
    // The variables that are declared before the script begins; null: what is declared is not
    // checked.
    const std::vector<std::string>* variables = nullptr;
    // Finds the types that the database has names for; empty: none.
    std::function<std::optional<AliasType>(const ObjectName&)> aliasType = {};
    // Whether *= and =* are operators, as they were once; empty: they are not.
    std::function<bool()> oldOuterJoins = {};
};

// Reads one batch: any number of statements, separated by blanks or semicolons.
//
// `sql` is UTF-8; lines are counted from `firstLine`. Throws ServerError: 102 and 156 for what
// cannot be read, 40517 for what the dialect knows and this database refuses, and the errors of
// tokenize().
[[nodiscard]] Script parseScript(std::string_view sql, const ParseOptions& options = {});

// Reads the declarations of parameters, as sp_executesql takes them: "@a int, @b int OUTPUT".
[[nodiscard]] std::vector<ParameterDefinition> parseParameters(std::string_view text,
                                                               const ParseOptions& options);

// Reads a name with its owner, "dbo.[t]".
[[nodiscard]] ObjectName parseObjectName(std::string_view text);

// Reads the columns of a table type, "(a int, b int)", as the table of that name.
[[nodiscard]] CreateTableStatement parseTableBody(std::string_view text, const std::string& name);

// Reads a list of names, "[a], [b]".
[[nodiscard]] std::vector<std::string> parseNames(std::string_view text);

// Reads the options of a sequence as they stand behind its name: "AS int START WITH 1".
[[nodiscard]] SequenceStatement parseSequenceOptions(std::string_view text);

// Reads the text of a type as typeText() writes it: "varchar(20)". Throws ServerError when it is
// not a type.
[[nodiscard]] TypeSpec parseType(std::string_view text);

}  // namespace kap::tsql
