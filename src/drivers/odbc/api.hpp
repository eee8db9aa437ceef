#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>

// The host's ODBC interface, whose wide characters are UTF-16 code units.
namespace kap::ado::odbc {

inline constexpr SQLHANDLE kNoHandle = nullptr;

inline SQLWCHAR* wide(char16_t* text) {
    return reinterpret_cast<SQLWCHAR*>(text);
}

// The interface takes texts that it only reads as writable ones.
inline SQLWCHAR* wide(const std::u16string& text) {
    return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text.data()));
}

// A number where the interface wants an address.
inline SQLPOINTER asPointer(SQLULEN number) {
    return reinterpret_cast<SQLPOINTER>(number);
}

}  // namespace kap::ado::odbc
