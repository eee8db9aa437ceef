#include "engine/executor/transactions.hpp"

#include <algorithm>
#include <utility>

#include "engine/sqlite/time_limit.hpp"
#include "engine/values/value.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

tsql::ServerError transactionLost() {
    return {tsql::Message::TransactionNotResumed};
}

// Names compare without case, as SQLite's own do, and may hold anything.
std::string savePointName(const std::string& name) {
    return sqlName("kap save " + name);
}

}  // namespace

Transactions::Transactions(FileConnection& connection, Counters& counters,
                           SchemaCatalogue& catalogue)
    : connection_(connection),
      database_(connection.database()),
      lockWait_(connection.lockWait()),
      counters_(counters),
      catalogue_(catalogue),
      beginImmediate_(connection.handle(), "BEGIN IMMEDIATE", StatementLife::Kept),
      commit_(connection.handle(), "COMMIT", StatementLife::Kept),
      beginDeferred_(connection.handle(), "BEGIN", StatementLife::Kept),
      protect_(connection.handle(), "SAVEPOINT kap_statement", StatementLife::Kept),
      release_(connection.handle(), "RELEASE kap_statement", StatementLife::Kept),
      rollback_(connection.handle(), "ROLLBACK", StatementLife::Kept),
      undo_(connection.handle(), "ROLLBACK TO kap_statement", StatementLife::Kept) {}

Transactions::~Transactions() {
    if (database_.inTransaction()) {
        discard();
    }
}

bool Transactions::joinsOpen() {
    const bool open = database_.inTransaction();
    if (open && (depth_ > 0 || scoped_)) {
        return true;
    }
    const bool endedWithinScope = !open && scoped_;
    lost_ = lost_ || (!open && depth_ > 0);
    if (open || depth_ > 0 || scoped_) {
        discard();
    }
    if (endedWithinScope) {
        throw transactionLost();
    }
    return false;
}

void Transactions::open(Access access) {
    const TimeLimit::Pause whole;
    try {
        if (access == Access::Read) {
            beginDeferred_.run();
        } else {
            const LockWait::Turn turn(lockWait_);
            beginImmediate_.run();
            connection_.requireFile();
        }
        learnFile(access);
    } catch (...) {
        discard();
        throw;
    }
    startGeneration_ = catalogue_.generation();
    scoped_ = true;
}

// What is known of it holds where nobody has written since this connection has.
void Transactions::learnFile(Access access) {
    if (access == Access::Write && ownVersion_ == connection_.contentVersion() &&
        catalogue_.isSettled()) {
        counters_.goOn();
        return;
    }
    catalogue_.refresh();
    // What was read of them outside a transaction may be older than the file.
    counters_.transactionEnded();
}

void Transactions::close() {
    const TimeLimit::Pause whole;
    try {
        counters_.flush();
        commit_.run();
    } catch (...) {
        discard();
        throw;
    }
    scoped_ = false;
    counters_.committed();
    ownVersion_ = connection_.contentVersion();
    ended_();
}

// After some failures (a full disk) SQLite has ended the transaction itself, and has nothing more
// to roll back.
void Transactions::discard() noexcept {
    undoAll();
    scoped_ = false;
    forget();
}

// With a statement that is ready: also when there is no memory, the lock must be given back. It is
// not ready when something has changed the temporary schema since (the tables that catch rows for
// OUTPUT and triggers do); then the transaction stays open until the connection is used again.
void Transactions::undoAll() noexcept {
    const TimeLimit::Pause whole;
    sqlite3_step(rollback_.handle());
    rollback_.reset();
    if (database_.inTransaction()) {
        sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transactions::forget() noexcept {
    depth_ = 0;
    savePoints_.clear();
    counters_.transactionEnded();
    ownVersion_.reset();
    if (catalogue_.generation() != startGeneration_) {
        catalogue_.undone();
    }
    ended_();
}

bool Transactions::takeLost() {
    static_cast<void>(joinsOpen());
    return std::exchange(lost_, false) && depth_ == 0;
}

void Transactions::begin() {
    const TimeLimit::Pause whole;
    lost_ = false;
    if (!joinsOpen()) {
        open(Access::Write);
        try {
            // What a rollback goes back to without giving up the lock.
            database_.run("SAVEPOINT kap_transaction");
        } catch (...) {
            discard();
            throw;
        }
        scoped_ = false;
    }
    ++depth_;
}

void Transactions::commit() {
    if (!joinsOpen() || depth_ == 0) {
        throw tsql::ServerError(tsql::Message::CommitWithoutBegin);
    }
    if (depth_ > 1) {
        --depth_;
        return;
    }
    close();
    depth_ = 0;
    savePoints_.clear();
}

void Transactions::rollback() {
    if (!joinsOpen() || depth_ == 0) {
        throw tsql::ServerError(tsql::Message::RollbackWithoutBegin);
    }
    // What a trigger rolls back has answered nothing yet, so nobody holds its numbers.
    if (counters_.pending() && !implicit_) {
        rollBackKeepingCounters();
    }
    discard();
}

// A client may hold row versions that this transaction has given out. Were they given out again to
// somebody else's change, that change would look to the client like its own. So the counters alone
// are kept, while the lock is still held. Where that fails everything is undone: going back does
// not fail, and this connection knows its counters still.
void Transactions::rollBackKeepingCounters() noexcept {
    const TimeLimit::Pause whole;
    try {
        database_.run("ROLLBACK TO kap_transaction");
        counters_.flushAfterRollback();
        commit_.run();
    } catch (...) {
        discard();
    }
}

bool Transactions::hasSavePoint(const std::string& name) const {
    return std::ranges::any_of(savePoints_,
                               [&](const std::string& each) { return sameName(each, name); });
}

void Transactions::save(const std::string& name) {
    const TimeLimit::Pause whole;
    if (!joinsOpen() || depth_ == 0) {
        throw tsql::ServerError(tsql::Message::SaveWithoutTransaction);
    }
    database_.run(("SAVEPOINT " + savePointName(name)).c_str());
    savePoints_.push_back(name);
}

void Transactions::rollbackTo(const std::string& name) {
    const TimeLimit::Pause whole;
    database_.run(("ROLLBACK TO " + savePointName(name)).c_str());
    while (!sameName(savePoints_.back(), name)) {
        savePoints_.pop_back();
    }
    if (catalogue_.generation() != startGeneration_) {
        catalogue_.undone();
    }
}

// A statement that cannot be undone by itself takes its transaction with it.
void Transactions::undoStatement() noexcept {
    const TimeLimit::Pause whole;
    bool undone = true;
    for (PreparedStatement* step : {&undo_, &release_}) {
        undone = undone && sqlite3_step(step->handle()) == SQLITE_DONE;
        step->reset();
    }
    if (!undone) {
        lost_ = depth_ > 0;
        discard();
        return;
    }
    if (catalogue_.generation() != startGeneration_) {
        catalogue_.undone();
    }
}

Transactions::WriteScope::WriteScope(Transactions& transactions, Writes writes)
    : transactions_(transactions),
      own_(transactions.calls_ == 0 && !transactions.joinsOpen()),
      ended_(transactions.calls_ > 0) {
    if (own_) {
        transactions_.open(Access::Write);
    } else if (writes == Writes::Several) {
        expectSeveral();
    }
}

void Transactions::WriteScope::expectSeveral() {
    if (!own_ && !protected_ && !ended_) {
        const TimeLimit::Pause whole;
        transactions_.protect_.run();
        protected_ = true;
    }
}

Transactions::WriteScope::~WriteScope() {
    if (ended_) {
        return;
    }
    if (own_) {
        transactions_.discard();
    } else if (!transactions_.database_.inTransaction()) {
        transactions_.lost_ = transactions_.depth_ > 0;
        transactions_.forget();  // and a scope around this one finds its transaction gone
    } else if (protected_) {
        transactions_.undoStatement();
    }
}

void Transactions::WriteScope::keep() {
    if (ended_) {
        return;
    }
    if (!transactions_.database_.inTransaction()) {
        throw transactionLost();
    }
    if (own_) {
        ended_ = true;  // a commit that fails has been rolled back
        transactions_.close();
    } else {
        if (protected_) {
            const TimeLimit::Pause whole;
            transactions_.release_.run();
        }
        ended_ = true;
    }
}

Transactions::ImplicitScope::ImplicitScope(Transactions& transactions)
    : transactions_(transactions), own_(transactions.depth_ == 0) {
    if (own_) {
        transactions_.depth_ = 1;
        transactions_.implicit_ = true;
    }
}

Transactions::ImplicitScope::~ImplicitScope() {
    if (own_) {
        transactions_.depth_ = 0;
        transactions_.implicit_ = false;
    }
}

Transactions::ReadScope::ReadScope(Transactions& transactions)
    : transactions_(transactions), own_(!transactions.joinsOpen()) {
    if (own_) {
        transactions_.open(Access::Read);
    }
}

Transactions::ReadScope::~ReadScope() {
    if (own_) {
        // Nothing was written: there is nothing to keep.
        transactions_.undoAll();
        transactions_.scoped_ = false;
    }
}

}  // namespace kap::engine
