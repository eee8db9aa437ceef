#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tsql/token.hpp"

// The texts by which the file knows its tables, word by word.
namespace kap::engine {

// Empty for a table of another program, in words that only SQLite knows.
[[nodiscard]] std::vector<tsql::Token> tokensOf(std::string_view definition);

[[nodiscard]] bool isWord(const tsql::Token& token, std::string_view word);
[[nodiscard]] bool isSign(const tsql::Token& token, std::string_view sign);

// The names between the next brackets from `position` on.
[[nodiscard]] std::vector<std::string> bracketedNames(const std::vector<tsql::Token>& tokens,
                                                      std::size_t position);

}  // namespace kap::engine
