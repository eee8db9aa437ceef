#include "tsql/parser.hpp"

#include <algorithm>

#include "base/ascii.hpp"
#include "tsql/keywords.hpp"
#include "tsql/lexer.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"
#include "tsql/stack_limit.hpp"

namespace kap::tsql {

Script parseScript(std::string_view sql, const ParseOptions& options) {
    return Parser(sql, tokenize(sql, options.firstLine, options.quotedNames), options).script();
}

TypeSpec parseType(std::string_view text) {
    const ParseOptions options;
    return Parser(text, tokenize(text), options).wholeType();
}

std::vector<ParameterDefinition> parseParameters(std::string_view text,
                                                 const ParseOptions& options) {
    return Parser(text, tokenize(text), options).wholeParameters();
}

ObjectName parseObjectName(std::string_view text) {
    const ParseOptions options;
    return Parser(text, tokenize(text), options).wholeName();
}

std::vector<std::string> parseNames(std::string_view text) {
    const ParseOptions options;
    return Parser(text, tokenize(text), options).wholeNames();
}

CreateTableStatement parseTableBody(std::string_view text, const std::string& name) {
    const ParseOptions options;
    return Parser(text, tokenize(text), options).wholeTableBody(name);
}

SequenceStatement parseSequenceOptions(std::string_view text) {
    const ParseOptions options;
    return Parser(text, tokenize(text), options).wholeSequence();
}

Parser::Level::Level(Parser& parser) : parser_(parser) {
    const int line = parser_.peek().line;
    if (parser_.nesting_ >= kMaxNesting) throw nestedTooDeeply(line);
    requireStack(line);
    ++parser_.nesting_;
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
    // SQLite's texts end at a NUL character.
    if (token.text.find('\0') != std::string::npos) unexpected();
    if (token.text.empty()) {
        throw ServerError(Message::MissingName, {}, token.line);
    }
    return next().text;
}

ObjectName Parser::objectName() {
    constexpr std::size_t kMaxParts = 4;
    ObjectName result;
    result.line = peek().line;
    result.parts.push_back(partOfName());
    while (atOperator(".") && !atOperator("*", 1)) {
        next();
        result.parts.push_back(partOfName());
        if (result.parts.size() > kMaxParts) {
            throw ServerError(Message::TooManyPrefixes, {result.text()}, result.line);
        }
    }
    return result;
}

// "database..table", "..table": what does not stand before a point is the default one.
std::string Parser::partOfName() {
    return atOperator(".") ? std::string() : name();
}

// A table's name, or a table variable's.
ObjectName Parser::tableName() {
    if (peek().kind != TokenKind::Variable) return objectName();
    // Whether there is such a table is found out with the tables.
    const Token& token = next();
    return {{token.text}, token.line};
}

std::string Parser::variable() {
    if (peek().kind != TokenKind::Variable) unexpected();
    checkDeclared(peek());
    return next().text;
}

std::string Parser::parameterMark() {
    std::string name = "?" + peek().text;
    checkDeclared({TokenKind::Variable, name, peek().line});
    next();
    return name;
}

std::string Parser::newVariable() {
    if (peek().kind != TokenKind::Variable) unexpected();
    declared_.push_back(peek().text);
    return next().text;
}

std::string Parser::sourceText(std::size_t from) const {
    const std::size_t start = tokens_[from].start;
    const std::size_t end = position_ > from ? tokens_[position_ - 1].end : start;
    return std::string(source_.substr(start, end - start));
}

std::vector<ParameterDefinition> Parser::wholeParameters() {
    std::vector<ParameterDefinition> result = parameterDefinitions();
    if (!atEnd()) unexpected();
    return result;
}

// A variable that is used must have been declared before, by the script or by who sends it.
void Parser::checkDeclared(const Token& variable) const {
    if (options_.variables == nullptr || variable.text.compare(0, 2, "@@") == 0) return;
    const auto same = [&](const std::string& name) {
        return equalsIgnoringCase(name, variable.text);
    };
    const bool known = std::any_of(declared_.begin(), declared_.end(), same) ||
                       std::any_of(options_.variables->begin(), options_.variables->end(), same);
    if (known) return;
    throw ServerError(Message::UndeclaredVariable, {variable.text}, variable.line);
}

ObjectName Parser::wholeName() {
    ObjectName result = objectName();
    if (!atEnd()) unexpected();
    return result;
}

std::vector<std::string> Parser::wholeNames() {
    std::vector<std::string> names;
    do {
        names.push_back(name());
    } while (acceptOperator(","));
    if (!atEnd()) unexpected();
    return names;
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
