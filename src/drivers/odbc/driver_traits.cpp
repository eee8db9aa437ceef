#include "drivers/odbc/driver_traits.hpp"

#include <array>

#include "base/ascii.hpp"
#include "base/unicode.hpp"

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

DriverTraits::Folding foldingOf(SQLUSMALLINT identifierCase) {
    switch (identifierCase) {
        case SQL_IC_LOWER:
            return DriverTraits::Folding::Lower;
        case SQL_IC_UPPER:
            return DriverTraits::Folding::Upper;
        default:
            return DriverTraits::Folding::AsWritten;
    }
}

}  // namespace

DriverTraits DriverTraits::of(SQLHDBC connection) {
    DriverTraits made;
    made.product = textInfo(connection, SQL_DBMS_NAME);
    made.quote = textInfo(connection, SQL_IDENTIFIER_QUOTE_CHAR);
    if (made.quote == " ") {  // the interface's way to say that names cannot be quoted
        made.quote.clear();
    }
    made.folding = foldingOf(numberInfo<SQLUSMALLINT>(connection, SQL_IDENTIFIER_CASE, 0));
    made.concurrent = numberInfo<SQLUSMALLINT>(connection, SQL_MAX_CONCURRENT_ACTIVITIES, 1) != 1;
    const std::string driver = asciiLower(textInfo(connection, SQL_DRIVER_NAME));
    made.losesBehindFailure = driver.find("tdsodbc") != std::string::npos;
    made.isolationLevels = numberInfo<SQLUINTEGER>(connection, SQL_TXN_ISOLATION_OPTION, 0);
    constexpr SQLUINTEGER kPieces = SQL_GD_BLOCK | SQL_GD_BOUND | SQL_GD_ANY_ORDER;
    made.cellPieces =
        (numberInfo<SQLUINTEGER>(connection, SQL_GETDATA_EXTENSIONS, 0) & kPieces) == kPieces;
    return made;
}

Product productOf(SQLHDBC connection) {
    return {textInfo(connection, SQL_DBMS_NAME), textInfo(connection, SQL_DBMS_VER),
            textInfo(connection, SQL_SERVER_NAME), textInfo(connection, SQL_USER_NAME)};
}

}  // namespace kap::ado::odbc
