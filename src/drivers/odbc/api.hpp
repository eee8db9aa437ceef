#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>

#include "platform/loaded_library.hpp"

// The host's ODBC interface, whose wide characters are UTF-16 code units.
namespace kap::ado::odbc {

// The manager of drivers is loaded with the first connection to a server. Its functions have their
// own names here, so that whatever calls them calls those of the loaded library.
inline constexpr platform::LoadedLibrary kDriverManager("libodbc.so.2");

// NOLINTBEGIN(readability-identifier-naming): the interface's names
#define KAPUTIL_DRIVER_MANAGER(name) \
    inline constinit const platform::LoadedFunction<decltype(::name)> name(kDriverManager, #name)
KAPUTIL_DRIVER_MANAGER(SQLAllocHandle);
KAPUTIL_DRIVER_MANAGER(SQLBindCol);
KAPUTIL_DRIVER_MANAGER(SQLBindParameter);
KAPUTIL_DRIVER_MANAGER(SQLCancel);
KAPUTIL_DRIVER_MANAGER(SQLColAttributeW);
KAPUTIL_DRIVER_MANAGER(SQLColumnsW);
KAPUTIL_DRIVER_MANAGER(SQLDescribeColW);
KAPUTIL_DRIVER_MANAGER(SQLDisconnect);
KAPUTIL_DRIVER_MANAGER(SQLDriverConnectW);
KAPUTIL_DRIVER_MANAGER(SQLDriversW);
KAPUTIL_DRIVER_MANAGER(SQLEndTran);
KAPUTIL_DRIVER_MANAGER(SQLExecDirectW);
KAPUTIL_DRIVER_MANAGER(SQLExecute);
KAPUTIL_DRIVER_MANAGER(SQLFetch);
KAPUTIL_DRIVER_MANAGER(SQLFreeHandle);
KAPUTIL_DRIVER_MANAGER(SQLFreeStmt);
KAPUTIL_DRIVER_MANAGER(SQLGetConnectAttrW);
KAPUTIL_DRIVER_MANAGER(SQLGetData);
KAPUTIL_DRIVER_MANAGER(SQLGetDiagField);
KAPUTIL_DRIVER_MANAGER(SQLGetDiagRecW);
KAPUTIL_DRIVER_MANAGER(SQLGetInfoW);
KAPUTIL_DRIVER_MANAGER(SQLGetStmtAttrW);
KAPUTIL_DRIVER_MANAGER(SQLGetTypeInfoW);
KAPUTIL_DRIVER_MANAGER(SQLMoreResults);
KAPUTIL_DRIVER_MANAGER(SQLNumResultCols);
KAPUTIL_DRIVER_MANAGER(SQLPrepareW);
KAPUTIL_DRIVER_MANAGER(SQLPrimaryKeysW);
KAPUTIL_DRIVER_MANAGER(SQLRowCount);
KAPUTIL_DRIVER_MANAGER(SQLSetConnectAttrW);
KAPUTIL_DRIVER_MANAGER(SQLSetDescFieldW);
KAPUTIL_DRIVER_MANAGER(SQLSetEnvAttr);
KAPUTIL_DRIVER_MANAGER(SQLSetPos);
KAPUTIL_DRIVER_MANAGER(SQLSetStmtAttrW);
KAPUTIL_DRIVER_MANAGER(SQLStatisticsW);
KAPUTIL_DRIVER_MANAGER(SQLTablesW);
#undef KAPUTIL_DRIVER_MANAGER
// NOLINTEND(readability-identifier-naming)

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
