#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "tsql/token.hpp"

namespace kap::tsql {

// What one batch may hold: hundreds of thousands of rows of values. Each takes some memory.
inline constexpr std::size_t kMostTokens = 8'000'000;

// Cuts a script into tokens; the last one is always TokenKind::End.
//
// `sql` is UTF-8; line numbers start at `firstLine`. Blanks and comments (`--` to the end of the
// line, nested
// `/* */`) are dropped. Throws ServerError: 105 for an unclosed quotation mark, 113 for an
// unclosed comment, 103 for a name over 128 characters, 102 for a character that starts nothing,
// 701 for more than kMostTokens words.
//
// `quotedNames` says what stands between double quotes at the start of the script: a name, or
// (with false) a text; SET QUOTED_IDENTIFIER within the script decides for what follows it.
[[nodiscard]] std::vector<Token> tokenize(std::string_view sql, int firstLine = 1,
                                          bool quotedNames = true);

}  // namespace kap::tsql
