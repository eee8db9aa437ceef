#include "tsql/parser.hpp"

#include "tsql/keywords.hpp"
#include "tsql/lexer.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"
#include "tsql/text.hpp"

namespace kap::tsql {

Script parseScript(std::string_view sql, int firstLine) {
    return Parser(tokenize(sql, firstLine)).script();
}

TypeSpec parseType(std::string_view text) {
    return Parser(tokenize(text)).wholeType();
}

Parser::Level::Level(Parser& parser) : parser_(parser) {
    if (parser_.nesting_ >= kMaxNesting) throw nestedTooDeeply(parser_.peek().line);
    ++parser_.nesting_;
}

const Token& Parser::peek(std::size_t ahead) const {
    return tokens_[std::min(position_ + ahead, tokens_.size() - 1)];
}

const Token& Parser::next() {
    const Token& token = peek();
    if (position_ + 1 < tokens_.size()) ++position_;
    return token;
}

bool Parser::atKeyword(std::string_view word, std::size_t ahead) const {
    const Token& token = peek(ahead);
    return token.kind == TokenKind::Word && equalsIgnoringCase(token.text, word);
}

bool Parser::atOperator(std::string_view symbol, std::size_t ahead) const {
    const Token& token = peek(ahead);
    return token.kind == TokenKind::Operator && token.text == symbol;
}

bool Parser::acceptKeyword(std::string_view word) {
    if (!atKeyword(word)) return false;
    next();
    return true;
}

bool Parser::acceptOperator(std::string_view symbol) {
    if (!atOperator(symbol)) return false;
    next();
    return true;
}

void Parser::expectKeyword(std::string_view word) {
    if (!acceptKeyword(word)) unexpected();
}

void Parser::expectOperator(std::string_view symbol) {
    if (!acceptOperator(symbol)) unexpected();
}

void Parser::unexpected() const {
    const Token& token = peek();
    if (token.kind == TokenKind::Word && isReserved(token.text)) {
        throw keywordError(token.text, token.line);
    }
    throw syntaxError(token.text, token.line);
}

void Parser::refuse(const std::string& construct) const {
    throw unsupported(construct, peek().line);
}

void Parser::refuseKeyword(std::string_view word, const char* construct) const {
    if (atKeyword(word)) refuse(construct);
}

bool Parser::atName(std::size_t ahead) const {
    const Token& token = peek(ahead);
    return token.kind == TokenKind::QuotedName ||
           (token.kind == TokenKind::Word && !isReserved(token.text));
}

std::string Parser::name() {
    if (!atName()) unexpected();
    const Token& token = peek();
    if (token.text.empty()) {
        throw ServerError(1038,
                          "An object or column name is missing or empty. For SELECT INTO "
                          "statements, verify each column has a name. For other statements, look "
                          "for empty alias names. Aliases defined as \"\" or [] are not allowed. "
                          "Change the alias to a valid name.",
                          token.line, 15);
    }
    return next().text;
}

ObjectName Parser::objectName() {
    constexpr std::size_t kMaxParts = 4;
    ObjectName result;
    result.line = peek().line;
    result.parts.push_back(name());
    while (atOperator(".") && !atOperator("*", 1)) {
        next();
        // "database..table": the owner between the points is the default one.
        if (atOperator(".")) continue;
        result.parts.push_back(name());
        if (result.parts.size() > kMaxParts) {
            throw ServerError(117,
                              "The object name '" + result.text() +
                                  "' contains more than the maximum number of prefixes. The "
                                  "maximum is 3.",
                              result.line, 15);
        }
    }
    return result;
}

std::vector<std::string> Parser::nameList() {
    std::vector<std::string> names;
    expectOperator("(");
    do {
        names.push_back(name());
    } while (acceptOperator(","));
    expectOperator(")");
    return names;
}

}  // namespace kap::tsql
