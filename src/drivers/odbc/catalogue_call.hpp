#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// A name given to a catalogue function: a null pointer when it is not restricted.
class CatalogueName {
public:
    CatalogueName() = default;
    // Names are compared exactly. With `pattern` they are matched, and may match others, too: not
    // every driver knows the sign that takes the meaning from those of a pattern, so that whoever
    // asks looks at the names that come.
    CatalogueName(const std::optional<std::string>& name, bool pattern = false);

    // Some drivers refuse a pattern that is not given: that for every name.
    void orAny() {
        if (!given_) {
            given_ = true;
            text_ = u"%";
        }
    }

    [[nodiscard]] SQLWCHAR* text() { return given_ ? wide(text_) : nullptr; }
    [[nodiscard]] SQLSMALLINT length() const {
        return given_ ? static_cast<SQLSMALLINT>(text_.size()) : SQLSMALLINT{0};
    }

private:
    bool given_ = false;
    std::u16string text_;
};

// The rows that a catalogue function answers, one after the other; columns from 1.
class CatalogueRows {
public:
    CatalogueRows(OdbcConnection& connection, Handle statement)
        : connection_(connection), statement_(std::move(statement)) {}

    [[nodiscard]] bool next();
    [[nodiscard]] std::string text(SQLUSMALLINT column);
    [[nodiscard]] std::optional<std::int64_t> number(SQLUSMALLINT column);

private:
    OdbcConnection& connection_;
    Handle statement_;
};

}  // namespace kap::ado::odbc
