#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>

#include "traffic.hpp"

// Between the texts of a traffic file and the interface's forms of values.
namespace kap::test::replay {

[[nodiscard]] SQLSMALLINT typeCode(const std::string& type);
[[nodiscard]] std::u16string wideText(const std::string& utf8);
[[nodiscard]] std::string plainText(const SQLWCHAR* text, SQLINTEGER length);

// Copies a text with its end; tells its length in units of `Unit`.
template <class Unit, class Length>
SQLRETURN putText(const std::basic_string<Unit>& text, void* target, SQLINTEGER room,
                  Length* length) {
    if (length != nullptr) {
        *length = static_cast<Length>(text.size() * sizeof(Unit));
    }
    if (target == nullptr || room <= 0) {
        return SQL_SUCCESS;
    }
    const auto most = static_cast<std::size_t>(room) / sizeof(Unit) - 1;
    const std::size_t count = text.copy(static_cast<Unit*>(target), most);
    static_cast<Unit*>(target)[count] = 0;
    return count < text.size() ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS;
}

// Puts a cell from `offset` bytes on into its place, as far as there is room.
SQLRETURN putCell(const std::string& cell, SQLSMALLINT form, void* target, SQLLEN room,
                  SQLLEN* length, std::size_t& offset);

// A parameter as the files show it.
struct BoundParameter {
    SQLSMALLINT form = 0;
    SQLSMALLINT type = 0;
    const void* value = nullptr;
    const SQLLEN* length = nullptr;
};
[[nodiscard]] std::string shownParameter(const BoundParameter& parameter);

}  // namespace kap::test::replay
