#include "drivers/odbc/catalogue_call.hpp"

#include <algorithm>
#include <array>

#include "base/unicode.hpp"

namespace kap::ado::odbc {

CatalogueName::CatalogueName(const std::optional<std::string>& name, bool pattern)
    : given_(name.has_value()) {
    if (!name) {
        return;
    }
    const String units(*name);
    text_ = units.units();
    if (pattern) {
        // What might be read as a sign of another meaning stands for any one character.
        std::ranges::replace_if(
            text_, [](char16_t unit) { return unit == u'\\' || unit == u'['; }, u'_');
    }
}

bool CatalogueRows::next() {
    const SQLRETURN code = SQLFetch(statement_.get());
    if (code == SQL_NO_DATA) {
        return false;
    }
    connection_.check(code, statement_);
    return true;
}

std::string CatalogueRows::text(SQLUSMALLINT column) {
    constexpr std::size_t kPiece = 512;
    std::u16string all;
    std::array<char16_t, kPiece> piece{};
    for (;;) {
        SQLLEN length = 0;
        const SQLRETURN code = SQLGetData(statement_.get(), column, SQL_C_WCHAR, piece.data(),
                                          static_cast<SQLLEN>(sizeof(piece)), &length);
        if (code == SQL_NO_DATA) {
            break;
        }
        connection_.check(code, statement_);
        if (length == SQL_NULL_DATA) {
            break;
        }
        all += piece.data();
        if (code == SQL_SUCCESS) {
            break;
        }
    }
    return unicode::displayUtf8(all);
}

std::optional<std::int64_t> CatalogueRows::number(SQLUSMALLINT column) {
    SQLBIGINT value = 0;
    SQLLEN length = 0;
    connection_.check(SQLGetData(statement_.get(), column, SQL_C_SBIGINT, &value, 0, &length),
                      statement_);
    return length == SQL_NULL_DATA ? std::nullopt : std::optional<std::int64_t>(value);
}

}  // namespace kap::ado::odbc
