#pragma once

#include <string_view>

#include "tsql/syntax.hpp"

namespace kap::tsql {

/// How deep brackets, subqueries and chains of operators may go.
inline constexpr int kMaxNesting = 200;

/// Reads one batch: any number of statements, separated by blanks or semicolons.
///
/// `sql` is UTF-8; lines are counted from `firstLine`. Throws ServerError: 102 and 156 for what
/// cannot be read, 40517 for what the dialect knows and this database refuses, and the errors of
/// tokenize().
[[nodiscard]] Script parseScript(std::string_view sql, int firstLine = 1);

/// Reads the text of a type as typeText() writes it: "varchar(20)". Throws ServerError when it is
/// not a type.
[[nodiscard]] TypeSpec parseType(std::string_view text);

}  // namespace kap::tsql
