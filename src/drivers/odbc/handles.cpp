#include "drivers/odbc/handles.hpp"

#include <new>

#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "drivers/odbc/diagnostics.hpp"

namespace kap::ado::odbc {
namespace {

SQLSMALLINT parentOf(SQLSMALLINT kind) {
    return kind == SQL_HANDLE_STMT ? SQL_HANDLE_DBC : SQL_HANDLE_ENV;
}

Handle newEnvironment() {
    if (!kDriverManager.isThere()) {
        throw AutomationError(errors::kProviderNotFound,
                              u"Database servers are reached through ODBC, which is not installed "
                              u"here (on Debian the package libodbc2)",
                              u"ADODB");
    }
    Handle made(SQL_HANDLE_ENV, kNoHandle);
    SQLSetEnvAttr(made.get(), SQL_ATTR_ODBC_VERSION, asPointer(SQL_OV_ODBC3), 0);
    return made;
}

}  // namespace

Handle::Handle(SQLSMALLINT kind, SQLHANDLE parent) : kind_(kind) {
    if (SQL_SUCCEEDED(SQLAllocHandle(kind, parent, &handle_))) {
        return;
    }
    if (parent == kNoHandle) {
        throw std::bad_alloc();
    }
    throw DriverError(diagnosticsOf(parentOf(kind), parent), kErrorSource);
}

Handle::~Handle() {
    if (handle_ != kNoHandle) {
        SQLFreeHandle(kind_, handle_);
    }
}

SQLHANDLE environment() {
    // Never freed: objects that outlive every function's statics may still close connections.
    static const auto* const made = new Handle(newEnvironment());
    return made->get();
}

}  // namespace kap::ado::odbc
