#pragma once

#include <cstdint>
#include <string>

#include "data/driver.hpp"
#include "drivers/odbc/api.hpp"

namespace kap::ado::odbc {

// A type as the driver announces it, in a result or in the catalogue.
struct AnnouncedType {
    SQLSMALLINT code = SQL_VARCHAR;
    std::string name;  // the server's own
    SQLULEN size = 0;  // characters, bytes or digits; may be untrue
    SQLSMALLINT decimals = 0;
    SQLLEN bytes = 0;  // of the longest value; may be untrue
    bool isUnsigned = false;
};

// Whether a program is to know texts as wide or as narrow ones; their letters are the same.
enum class TextKind : std::uint8_t { Wide, Narrow };

// Fills in the type, sizes and row version of a column.
// `inventedSize`: what texts without a limit are announced with; 0: they are told apart.
// `wideTexts`: what those are to be that are announced as wide.
void describeType(const AnnouncedType& type, SQLULEN inventedSize, TextKind wideTexts,
                  ColumnInfo& info);

}  // namespace kap::ado::odbc
