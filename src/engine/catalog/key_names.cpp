#include "engine/catalog/key_names.hpp"

#include <algorithm>
#include <cstddef>

#include "engine/catalog/definition_tokens.hpp"
#include "engine/catalog/tables.hpp"

namespace kap::engine {

std::string keyName(std::string_view createSql, const std::vector<std::string>& columns) {
    const std::vector<tsql::Token> tokens = tokensOf(createSql);
    for (std::size_t i = 0; i + 2 < tokens.size(); ++i) {
        if (isWord(tokens[i], "CONSTRAINT") &&
            (isWord(tokens[i + 2], "PRIMARY") || isWord(tokens[i + 2], "UNIQUE")) &&
            std::ranges::equal(bracketedNames(tokens, i + 2), columns, sameName)) {
            return tokens[i + 1].text;
        }
    }
    return {};
}

}  // namespace kap::engine
