#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "tsql/lexer.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

// FOR XML, FOR JSON, the methods of XML, and the columns of OPENJSON.
namespace kap::tsql {

bool Parser::atRowsAsText() const {
    return atKeyword("FOR") && (atKeyword("XML", 1) || atKeyword("JSON", 1));
}

// FOR XML mode [('row')] [, option]..., FOR JSON mode [, option]...
RowsAsText Parser::rowsAsText() {
    RowsAsText result;
    next();
    result.line = peek().line;
    const bool json = atKeyword("JSON");
    result.language = json ? RowsAsText::Language::Json : RowsAsText::Language::Xml;
    next();
    if (!json && atKeyword("EXPLICIT")) refuse("FOR XML EXPLICIT");
    if (!json && acceptKeyword("RAW")) {
        result.mode = RowsAsText::Mode::Raw;
    } else if (acceptKeyword("PATH")) {
        result.mode = RowsAsText::Mode::Path;
    } else {
        expectKeyword("AUTO");
    }
    if (!json && result.mode != RowsAsText::Mode::Auto) result.rowName = optionalBracketedText();
    while (acceptOperator(","))
        rowsAsTextOption(result);
    if (result.root && result.withoutArray) {
        throw ServerError(Message::JsonRootWithoutArray, {}, result.line);
    }
    if (!json && result.root && result.root->empty()) {
        throw ServerError(Message::XmlRootEmpty, {}, result.line);
    }
    return result;
}

void Parser::rowsAsTextOption(RowsAsText& rows) {
    const bool json = rows.language == RowsAsText::Language::Json;
    if (acceptKeyword("ROOT")) {
        rows.root = optionalBracketedText().value_or("root");
    } else if (json && acceptKeyword("INCLUDE_NULL_VALUES")) {
        rows.marksNulls = true;
    } else if (json && acceptKeyword("WITHOUT_ARRAY_WRAPPER")) {
        rows.withoutArray = true;
    } else if (json) {
        unexpected();
    } else if (acceptKeyword("ELEMENTS")) {
        rows.elements = true;
        rows.marksNulls = acceptKeyword("XSINIL");
        if (!rows.marksNulls) acceptKeyword("ABSENT");
    } else if (acceptKeyword("TYPE")) {
        rows.typed = true;
    } else if (acceptKeyword("BINARY")) {
        expectKeyword("BASE64");
        rows.binary = true;
    } else {
        refuseKeyword("XMLDATA", "FOR XML XMLDATA");
        refuseKeyword("XMLSCHEMA", "FOR XML XMLSCHEMA");
        unexpected();
    }
}

std::optional<std::string> Parser::optionalBracketedText() {
    if (!acceptOperator("(")) return std::nullopt;
    if (peek().kind != TokenKind::Text && peek().kind != TokenKind::NationalText) unexpected();
    std::string text = next().text;
    expectOperator(")");
    return text;
}

// Statements that take rows cannot take a text instead of them.
void Parser::refuseRowsAsText(const Query& query, const char* statement) {
    if (!query.asText) return;
    const bool json = query.asText->language == RowsAsText::Language::Json;
    throw ServerError(json ? Message::JsonNotAllowed : Message::XmlNotAllowed, {statement},
                      query.asText->line);
}

// What a SELECT cannot do with its rows when they are to be one text.
void Parser::checkRowsAsText(const Query& query) {
    const auto* select = std::get_if<Select>(&query.terms.front().node);
    if (!query.asText || select == nullptr) return;
    if (select->into) refuseRowsAsText(query, "SELECT INTO");
    for (const SelectItem& item : select->items) {
        if (std::holds_alternative<AssignmentItem>(item.node)) {
            refuseRowsAsText(query, "ASSIGNMENT");
        }
    }
}

// Behind a subquery: .value('path', 'type'), the one method of XML that is there.
ExpressionPtr Parser::xmlMethod(ExpressionPtr xml) {
    const int line = next().line;
    static constexpr std::array kOthers{"query", "exist", "modify", "nodes"};
    for (const char* other : kOthers) {
        if (atKeyword(other)) refuse("the xml method " + std::string(other));
    }
    if (!atKeyword("value")) unexpected();
    next();
    expectOperator("(");
    ExpressionPtr path = value();
    expectOperator(",");
    CastExpression result;
    result.type = typeInText();
    expectOperator(")");
    result.value = invoked(kXmlValue, line, std::move(xml), std::move(path));
    const int below = result.value->depth;
    return make(std::move(result), line, below);
}

// x.value('path', 'type') of a column that holds XML.
ExpressionPtr Parser::xmlMethodOfColumn(FunctionCall call, int line) {
    ObjectName column = std::move(call.name);
    column.parts.pop_back();
    CastExpression result;
    const auto* type = std::get_if<Literal>(&call.arguments[1]->node);
    result.type = typeOfText(type->text, line);
    result.value = invoked(kXmlValue, line, make(ColumnReference{std::move(column)}, line),
                           std::move(call.arguments[0]));
    const int below = result.value->depth;
    return make(std::move(result), line, below);
}

// Whether a.b.value(path, 'type') is meant, and no function of that name.
bool Parser::isXmlMethod(const FunctionCall& call) {
    if (call.name.parts.size() < 2 || call.arguments.size() != 2 || call.star) return false;
    if (call.name.last() != "value" || equalsIgnoringCase(call.name.parts.front(), "dbo")) {
        return false;
    }
    const auto* type = std::get_if<Literal>(&call.arguments[1]->node);
    return type != nullptr &&
           (type->kind == LiteralKind::Text || type->kind == LiteralKind::NationalText);
}

TypeSpec Parser::typeInText() {
    if (peek().kind != TokenKind::Text && peek().kind != TokenKind::NationalText) unexpected();
    const Token token = next();
    return typeOfText(token.text, token.line);
}

TypeSpec Parser::typeOfText(const std::string& text, int line) {
    ParseOptions options;
    options.aliasType = options_.aliasType;
    try {
        return Parser(text, tokenize(text), options).wholeType();
    } catch (const ServerError& error) {
        throw ServerError(error.number(), error.message(), line, error.severity(), error.state());
    }
}

// WITH (name type ['path'] [AS JSON], ...) behind OPENJSON(...).
std::vector<JsonColumn> Parser::jsonColumns() {
    std::vector<JsonColumn> columns;
    expectKeyword("WITH");
    expectOperator("(");
    do {
        JsonColumn& column = columns.emplace_back();
        column.line = peek().line;
        column.name = name();
        column.type = type(column.name, static_cast<int>(columns.size()));
        if (atKeyword("COLLATE")) collation();
        if (peek().kind == TokenKind::Text || peek().kind == TokenKind::NationalText) {
            column.path = next().text;
        }
        if (acceptKeyword("AS")) {
            expectKeyword("JSON");
            column.asJson = true;
        }
        const bool unlimited =
            column.type.type == SqlType::NVarChar && column.type.length == kMaxLength;
        if (column.asJson && !unlimited) {
            throw ServerError(Message::AsJsonOfOtherType, {}, column.line);
        }
    } while (acceptOperator(","));
    expectOperator(")");
    return columns;
}

}  // namespace kap::tsql
