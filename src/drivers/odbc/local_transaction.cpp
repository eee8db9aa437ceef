#include "drivers/odbc/local_transaction.hpp"

#include <utility>

namespace kap::ado::odbc {

LocalTransaction::LocalTransaction(OdbcConnection& connection, bool wanted)
    : connection_(connection), open_(wanted && !connection.inTransaction()) {
    if (open_) {
        connection_.setAutoCommit(false);
    }
}

LocalTransaction::~LocalTransaction() {
    if (!open_ || connection_.isLost()) {
        return;
    }
    try {
        connection_.endTransaction(false);
        connection_.setAutoCommit(true);
    } catch (const DriverError&) {
        // The error that has brought it here is the one that clients are told; what cannot be
        // undone must not be made to last by what comes next.
        connection_.giveUp();
    }
}

void LocalTransaction::commit() {
    if (open_) {
        connection_.endTransaction(true);
        open_ = false;
        connection_.setAutoCommit(true);
    }
}

}  // namespace kap::ado::odbc
