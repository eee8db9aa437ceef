#pragma once

#include <string>

#include "tsql/statements.hpp"

namespace kap::tsql::testing {

// A syntax tree as bracketed text, operators first: "a + 1" is "(+ a 1)".
std::string treeText(const Expression& expression);
std::string treeText(const Query& query);
std::string treeText(const Statement& statement);

// The trees of all statements of a script, one a line.
std::string parsed(const std::string& sql);

}  // namespace kap::tsql::testing
