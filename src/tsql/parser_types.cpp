#include <array>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
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

struct TypeWord {
    const char* word;
    TypeSpec spec;
};

// The words that name a type; lengths and precisions are those without brackets.
constexpr std::array kWords = std::to_array<TypeWord>({
    {"bit", {SqlType::Bit}},
    {"tinyint", {SqlType::TinyInt}},
    {"smallint", {SqlType::SmallInt}},
    {"int", {SqlType::Int}},
    {"integer", {SqlType::Int}},
    {"bigint", {SqlType::BigInt}},
    {"decimal", {SqlType::Decimal, 0, kDefaultPrecision, 0}},
    {"dec", {SqlType::Decimal, 0, kDefaultPrecision, 0}},
    {"numeric", {SqlType::Numeric, 0, kDefaultPrecision, 0}},
    {"money", {SqlType::Money}},
    {"smallmoney", {SqlType::SmallMoney}},
    {"float", {SqlType::Float}},
    {"real", {SqlType::Real}},
    {"date", {SqlType::Date}},
    {"datetime", {SqlType::DateTime}},
    {"smalldatetime", {SqlType::SmallDateTime}},
    {"char", {SqlType::Char, 1}},
    {"character", {SqlType::Char, 1}},
    {"varchar", {SqlType::VarChar, 1}},
    {"nchar", {SqlType::NChar, 1}},
    {"nvarchar", {SqlType::NVarChar, 1}},
    {"text", {SqlType::Text, kMaxLength}},
    {"ntext", {SqlType::NText, kMaxLength}},
    {"binary", {SqlType::Binary, 1}},
    {"varbinary", {SqlType::VarBinary, 1}},
    {"image", {SqlType::Image, kMaxLength}},
    {"timestamp", {SqlType::Timestamp, 8}},
    {"rowversion", {SqlType::Timestamp, 8}},
    {"uniqueidentifier", {SqlType::UniqueIdentifier, 16}},
});

constexpr std::array kRefusedWords{"datetime2",   "datetimeoffset", "time",      "xml",
                                   "sql_variant", "hierarchyid",    "geography", "geometry",
                                   "cursor",      "table"};

bool hasLength(SqlType type) {
    switch (type) {
        case SqlType::Char:
        case SqlType::VarChar:
        case SqlType::NChar:
        case SqlType::NVarChar:
        case SqlType::Binary:
        case SqlType::VarBinary:
            return true;
        default:
            return false;
    }
}

bool varies(SqlType type) {
    return type == SqlType::VarChar || type == SqlType::NVarChar || type == SqlType::VarBinary;
}

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
    for (const TypeWord& word : kWords) {
        if (equalsIgnoringCase(word.word, typeName.last()))
            return sizedType(word.spec, owner, ordinal);
    }
    if (equalsIgnoringCase(typeName.last(), "sysname")) {
        constexpr int kNameLength = 128;
        aliasNullable_ = false;
        return {SqlType::NVarChar, kNameLength};
    }
    if (options_.aliasType) {
        if (const auto alias = options_.aliasType(typeName.last())) {
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
    if (varies(spec.type) && acceptKeyword("MAX")) {
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
