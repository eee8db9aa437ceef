#include "ado/embedded/key_names.hpp"

#include <algorithm>
#include <cstddef>

#include "ado/embedded/catalogue.hpp"
#include "tsql/lexer.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::ado::embedded {
namespace {

using tsql::Token;
using tsql::TokenKind;

std::vector<Token> tokensOf(std::string_view sql) {
    try {
        return tsql::tokenize(sql);
    } catch (const tsql::ServerError&) {
        return {};  // a table of another program, in words that only SQLite knows
    }
}

bool isWord(const Token& token, std::string_view word) {
    return token.kind == TokenKind::Word && tsql::equalsIgnoringCase(token.text, word);
}

bool isSign(const Token& token, std::string_view sign) {
    return token.kind == TokenKind::Operator && token.text == sign;
}

// The names between the next brackets after `position`.
std::vector<std::string> bracketed(const std::vector<Token>& tokens, std::size_t position) {
    std::vector<std::string> names;
    while (position < tokens.size() && !isSign(tokens[position], "(")) {
        ++position;
    }
    for (++position; position < tokens.size() && !isSign(tokens[position], ")"); ++position) {
        if (!isSign(tokens[position], ",")) {
            names.push_back(tokens[position].text);
        }
    }
    return names;
}

}  // namespace

std::string keyName(std::string_view createSql, const std::vector<std::string>& columns) {
    const std::vector<Token> tokens = tokensOf(createSql);
    for (std::size_t i = 0; i + 2 < tokens.size(); ++i) {
        if (isWord(tokens[i], "CONSTRAINT") &&
            (isWord(tokens[i + 2], "PRIMARY") || isWord(tokens[i + 2], "UNIQUE")) &&
            std::ranges::equal(bracketed(tokens, i + 2), columns, sameName)) {
            return tokens[i + 1].text;
        }
    }
    return {};
}

}  // namespace kap::ado::embedded
