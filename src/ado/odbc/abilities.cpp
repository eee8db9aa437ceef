#include "ado/odbc/abilities.hpp"

#include <array>

#include "frame/unicode.hpp"
#include "tsql/text.hpp"

namespace kap::ado::odbc {
namespace {

std::string textInfo(SQLHDBC connection, SQLUSMALLINT what) {
    std::array<char16_t, 256> text{};
    SQLSMALLINT bytes = 0;
    constexpr auto kBytes = static_cast<SQLSMALLINT>(sizeof(text));
    if (!SQL_SUCCEEDED(SQLGetInfoW(connection, what, text.data(), kBytes, &bytes))) {
        return {};
    }
    return unicode::displayUtf8(std::u16string_view(text.data()));
}

template <class Number>
Number numberInfo(SQLHDBC connection, SQLUSMALLINT what, Number otherwise) {
    Number value = otherwise;
    const SQLRETURN code = SQLGetInfoW(connection, what, &value, sizeof(value), nullptr);
    return SQL_SUCCEEDED(code) ? value : otherwise;
}

Abilities::Folding foldingOf(SQLUSMALLINT identifierCase) {
    switch (identifierCase) {
        case SQL_IC_LOWER:
            return Abilities::Folding::Lower;
        case SQL_IC_UPPER:
            return Abilities::Folding::Upper;
        default:
            return Abilities::Folding::AsWritten;
    }
}

// The type that a column is compared as when its own has no order; empty: its own.
std::string comparableType(bool transactNames, const std::string& typeName) {
    struct Comparable {
        bool transactNames;
        std::string_view type;
        const char* comparedAs;
    };
    static constexpr std::array<Comparable, 6> kTypes = {{{true, "text", "varchar(max)"},
                                                          {true, "ntext", "nvarchar(max)"},
                                                          {true, "image", "varbinary(max)"},
                                                          {true, "xml", "nvarchar(max)"},
                                                          {false, "json", "text"},
                                                          {false, "xml", "text"}}};
    for (const Comparable& each : kTypes) {
        if (each.transactNames == transactNames && tsql::equalsIgnoringCase(each.type, typeName)) {
            return each.comparedAs;
        }
    }
    return {};
}

bool holds(const std::string& text, std::string_view part) {
    return tsql::asciiLower(text).find(part) != std::string::npos;
}

}  // namespace

Abilities Abilities::of(SQLHDBC connection) {
    Abilities made;
    made.product = textInfo(connection, SQL_DBMS_NAME);
    made.quote = textInfo(connection, SQL_IDENTIFIER_QUOTE_CHAR);
    if (made.quote == " ") {  // the interface's way to say that names cannot be quoted
        made.quote.clear();
    }
    made.folding = foldingOf(numberInfo<SQLUSMALLINT>(connection, SQL_IDENTIFIER_CASE, 0));
    made.concurrent = numberInfo<SQLUSMALLINT>(connection, SQL_MAX_CONCURRENT_ACTIVITIES, 1) != 1;
    made.isolationLevels = numberInfo<SQLUINTEGER>(connection, SQL_TXN_ISOLATION_OPTION, 0);
    constexpr SQLUINTEGER kPieces = SQL_GD_BLOCK | SQL_GD_BOUND | SQL_GD_ANY_ORDER;
    made.cellPieces =
        (numberInfo<SQLUINTEGER>(connection, SQL_GETDATA_EXTENSIONS, 0) & kPieces) == kPieces;
    if (holds(made.product, "sql server") || holds(made.product, "sybase")) {
        made.transactNames = true;
        made.batches = true;
        made.identity = "SCOPE_IDENTITY()";
    } else if (holds(made.product, "postgresql")) {
        made.returning = true;
        made.castsParameters = true;
        made.inventedSize = 255;
    }
    return made;
}

std::string Abilities::quoted(std::string_view name) const {
    if (quote.empty()) {
        return std::string(name);
    }
    std::string made = quote;
    for (const char letter : name) {
        made.append(quote.size() == 1 && letter == quote.front() ? 2 : 1, letter);
    }
    return made + quote;
}

std::string Abilities::markFor(const std::string& typeName) const {
    return castsParameters && !typeName.empty() ? "CAST(? AS " + quoted(typeName) + ")" : "?";
}

std::string Abilities::comparison(const std::string& quotedColumn,
                                  const std::string& typeName) const {
    const std::string other = comparableType(transactNames, typeName);
    if (!other.empty()) {
        return "CAST(" + quotedColumn + " AS " + other + ") = ?";
    }
    return quotedColumn + " = " + markFor(typeName);
}

std::string Abilities::folded(std::string_view name) const {
    switch (folding) {
        case Folding::Lower:
            return tsql::asciiLower(name);
        case Folding::Upper:
            return tsql::asciiUpper(name);
        case Folding::AsWritten:
            break;
    }
    return std::string(name);
}

}  // namespace kap::ado::odbc
