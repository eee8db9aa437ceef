#include "engine/catalog/definition_tokens.hpp"

#include "base/ascii.hpp"
#include "tsql/lexer.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

using tsql::Token;
using tsql::TokenKind;

std::vector<Token> tokensOf(std::string_view definition) {
    try {
        return tsql::tokenize(definition);
    } catch (const tsql::ServerError&) {
        return {};  // that the dialect cannot read it is the answer
    }
}

bool isWord(const Token& token, std::string_view word) {
    return token.kind == TokenKind::Word && equalsIgnoringCase(token.text, word);
}

bool isSign(const Token& token, std::string_view sign) {
    return token.kind == TokenKind::Operator && token.text == sign;
}

std::vector<std::string> bracketedNames(const std::vector<Token>& tokens, std::size_t position) {
    std::vector<std::string> names;
    while (position < tokens.size() && !isSign(tokens[position], "("))
        ++position;
    for (++position; position < tokens.size() && !isSign(tokens[position], ")"); ++position) {
        const TokenKind kind = tokens[position].kind;
        if (kind == TokenKind::QuotedName || kind == TokenKind::Word)
            names.push_back(tokens[position].text);
    }
    return names;
}

}  // namespace kap::engine
