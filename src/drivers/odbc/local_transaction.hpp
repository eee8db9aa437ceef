#pragma once

#include "drivers/odbc/odbc_connection.hpp"

namespace kap::ado::odbc {

// Statements that change the database together or not at all: in the transaction that is open, or
// else in one of their own, which is undone unless it is committed.
class LocalTransaction {
public:
    LocalTransaction(OdbcConnection& connection, bool wanted);
    ~LocalTransaction();
    LocalTransaction(const LocalTransaction&) = delete;
    LocalTransaction& operator=(const LocalTransaction&) = delete;

    void commit();

private:
    OdbcConnection& connection_;
    bool open_;
};

}  // namespace kap::ado::odbc
