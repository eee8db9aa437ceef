#include "drivers/odbc/local_transaction.hpp"

#include <utility>

namespace kap::ado::odbc {

LocalTransaction::LocalTransaction(Link& link, bool wanted)
    : link_(link), open_(wanted && !link.inTransaction()) {
    if (open_) {
        link_.setAutoCommit(false);
    }
}

LocalTransaction::~LocalTransaction() {
    if (!open_ || link_.isLost()) {
        return;
    }
    try {
        link_.endTransaction(false);
        link_.setAutoCommit(true);
    } catch (const DriverError&) {
        // The error that has brought it here is the one that clients are told; what cannot be
        // undone must not be made to last by what comes next.
        link_.giveUp();
    }
}

void LocalTransaction::commit() {
    if (open_) {
        link_.endTransaction(true);
        open_ = false;
        link_.setAutoCommit(true);
    }
}

}  // namespace kap::ado::odbc
