#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "tsql/lexer.hpp"
#include "tsql/parser_state.hpp"
#include "tsql/server_error.hpp"

namespace kap::tsql {

namespace {

constexpr int kMaxBytes = 8000;
constexpr int kMaxNationalCharacters = 4000;
constexpr int kMaxPrecision = 38;
constexpr int kMaxFloatPrecision = 53;
constexpr int kRealPrecision = 24;
constexpr int kDefaultPrecision = 18;
// Outside a table definition (CAST, CONVERT) a text without length has room for thirty characters.
constexpr int kDefaultCastLength = 30;

// Other words for a type than its name.
struct TypeWord {
    const char* word;
    SqlType type;
};

constexpr std::array kOtherWords = std::to_array<TypeWord>({
    {"integer", SqlType::Int},
    {"dec", SqlType::Decimal},
    {"character", SqlType::Char},
    {"rowversion", SqlType::Timestamp},
});

std::optional<SqlType> typeNamed(std::string_view word) {
    for (int i = 0; i < kSqlTypes; ++i) {
        const auto type = static_cast<SqlType>(i);
        if (equalsIgnoringCase(typeName(type), word)) return type;
    }
    for (const TypeWord& other : kOtherWords) {
        if (equalsIgnoringCase(other.word, word)) return other.type;
    }
    return std::nullopt;
}

constexpr std::array kRefusedWords{"xml",    "hierarchyid", "geography", "geometry",
                                   "cursor", "table",       "json",      "vector"};

std::string place(const std::string& owner, int ordinal) {
    return owner.empty() ? "CAST or CONVERT"
                         : "Column, parameter, or variable #" + plain::text(ordinal);
}

}  // namespace

TypeSpec Parser::wholeType() {
    const TypeSpec result = type("", 0);
    if (!atEnd()) unexpected();
    return result;
}

std::shared_ptr<CreateTableStatement> Parser::tableType(const std::string& owner) {
    if (!options_.aliasType || !atName() || typeNamed(peek().text)) return nullptr;
    const std::size_t start = position_;
    const ObjectName name = objectName();
    const auto found = options_.aliasType(name);
    if (!found || found->table.empty()) {
        position_ = start;
        return nullptr;
    }
    ParseOptions options;
    options.aliasType = options_.aliasType;
    return std::make_shared<CreateTableStatement>(
        Parser(found->table, tokenize(found->table), options).wholeTableBody(owner));
}

CreateTableStatement Parser::wholeTableBody(const std::string& name) {
    CreateTableStatement table;
    table.table = {{name}, 1};
    tableBody(table);
    if (!atEnd()) unexpected();
    return table;
}

TypeSpec Parser::type(const std::string& owner, int ordinal) {
    const Token token = peek();
    ObjectName typeName;
    if (atKeyword("DOUBLE") && atKeyword("PRECISION", 1)) {
        next();
        next();
        return {SqlType::Float};
    }
    aliasNullable_ = true;
    if (atKeyword("NATIONAL")) refuse("NATIONAL");
    const bool varying = (atKeyword("CHAR") || atKeyword("CHARACTER")) && atKeyword("VARYING", 1);
    if (varying) {
        next();
        next();
        return sizedType({SqlType::VarChar, 1}, owner, ordinal);
    }
    // "timestamp" and most type words are not reserved, so a type reads like any name.
    typeName = objectName();
    if (const auto known = typeNamed(typeName.last())) {
        return sizedType(factsOf(*known).usual, owner, ordinal);
    }
    if (equalsIgnoringCase(typeName.last(), "sysname")) {
        constexpr int kNameLength = 128;
        aliasNullable_ = false;
        return {SqlType::NVarChar, kNameLength};
    }
    if (options_.aliasType) {
        if (const auto alias = options_.aliasType(typeName)) {
            aliasNullable_ = alias->nullable;
            return alias->type;
        }
    }
    for (const char* refused : kRefusedWords) {
        if (equalsIgnoringCase(refused, typeName.last())) throw unsupported(refused, token.line);
    }
    if (owner.empty()) {
        throw ServerError(Message::UndefinedSystemType, {typeName.text()}, token.line);
    }
    throw ServerError(Message::UnknownDataType, {place(owner, ordinal), typeName.text()},
                      token.line);
}

TypeSpec Parser::sizedType(TypeSpec spec, const std::string& owner, int ordinal) {
    if (hasLength(spec.type) && owner.empty()) spec.length = kDefaultCastLength;
    if (!atOperator("(")) return spec;
    const int line = next().line;
    if (hasLength(spec.type)) {
        lengthSize(spec, owner);
    } else if (isDecimal(spec.type)) {
        decimalSize(spec, owner, ordinal);
        spec = decimalType(spec.type, spec.precision, spec.scale);
    } else if (isFineDate(spec.type)) {
        fractionSize(spec);
    } else if (spec.type == SqlType::Float) {
        const int precision = sizeNumber();
        if (precision > kMaxFloatPrecision) {
            throw ServerError(Message::PrecisionTooLarge,
                              {place(owner, ordinal), plain::text(precision), "53"}, line);
        }
        if (precision <= kRealPrecision) spec.type = SqlType::Real;
    } else {
        throw ServerError(Message::NoWidthOfType, {place(owner, ordinal), typeName(spec.type)},
                          line);
    }
    expectOperator(")");
    return spec;
}

void Parser::lengthSize(TypeSpec& spec, const std::string& owner) {
    if (isVarying(spec.type) && acceptKeyword("MAX")) {
        spec.length = kMaxLength;
        return;
    }
    const int line = peek().line;
    spec.length = sizeNumber();
    const std::string size = plain::text(spec.length);
    const char* kind = owner.empty() ? "type" : "column";
    const std::string name = owner.empty() ? typeName(spec.type) : owner;
    if (spec.length > kMaxBytes) {
        throw ServerError(Message::SizeExceedsMaximum, {size, kind, name}, line);
    }
    if (isNational(spec.type) && spec.length > kMaxNationalCharacters) {
        throw ServerError(Message::NationalSizeExceedsMaximum, {size, kind, name}, line);
    }
}

void Parser::decimalSize(TypeSpec& spec, const std::string& owner, int ordinal) {
    const int line = peek().line;
    spec.precision = sizeNumber();
    if (spec.precision > kMaxPrecision) {
        throw ServerError(Message::PrecisionTooLarge,
                          {place(owner, ordinal), plain::text(spec.precision), "38"}, line);
    }
    if (!acceptOperator(",")) return;
    if (peek().kind == TokenKind::Integer && asciiLower(peek().text) == "0") {
        next();
        return;
    }
    spec.scale = sizeNumber();
    if (spec.scale > spec.precision) {
        throw ServerError(Message::ScaleOutOfRange,
                          {plain::text(spec.scale), owner, plain::text(spec.precision)}, line);
    }
}

void Parser::fractionSize(TypeSpec& spec) {
    if (peek().kind != TokenKind::Integer) unexpected();
    const Token& token = next();
    const auto size = plain::readInt(token.text);
    const int most = factsOf(spec.type).scale;
    if (!size || *size > most) {
        throw ServerError(Message::InvalidScale, {plain::text(token.line), token.text}, token.line);
    }
    spec.scale = *size;
}

int Parser::sizeNumber() {
    if (peek().kind != TokenKind::Integer) unexpected();
    const Token& token = next();
    const auto size = plain::readInt(token.text);
    if (!size || *size == 0) {
        throw ServerError(Message::InvalidLengthOrPrecision, {token.text}, token.line);
    }
    return *size;
}

}  // namespace kap::tsql
