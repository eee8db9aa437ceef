#include "engine/executor/transactions.hpp"

#include <array>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"
#include "support/database.hpp"

namespace kap::ado::embedded {
namespace {

using kap::test::TemporaryFolder;
using test::errorOf;
using test::openSession;
using test::rowsOf;

TEST(Transactions, WhatIsCommittedStands) {
    const auto session = openSession(":memory:commit");
    (void)session->execute("CREATE TABLE t (a int)");
    session->begin();
    (void)session->execute("INSERT INTO t VALUES (1)");
    session->commit();
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "1");
    EXPECT_EQ(session->transactionDepth(), 0);
}

TEST(Transactions, WhatIsRolledBackIsGone) {
    const auto session = openSession(":memory:rollback");
    (void)session->execute("CREATE TABLE t (a int)");
    session->begin();
    (void)session->execute("INSERT INTO t VALUES (1)");
    session->rollback();
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "");
}

TEST(Transactions, AnInnerCommitOnlyCountsDown) {
    const auto session = openSession(":memory:nested");
    (void)session->execute("CREATE TABLE t (a int); BEGIN TRAN; BEGIN TRANSACTION");
    EXPECT_EQ(session->transactionDepth(), 2);
    (void)session->execute("INSERT INTO t VALUES (1); COMMIT");
    EXPECT_EQ(session->transactionDepth(), 1);
    (void)session->execute("ROLLBACK TRAN");
    EXPECT_EQ(session->transactionDepth(), 0);
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "");
}

TEST(Transactions, ARollbackEndsEveryLevel) {
    const auto session = openSession(":memory:levels");
    session->begin();
    session->begin();
    session->begin();
    session->rollback();
    EXPECT_EQ(session->transactionDepth(), 0);
}

TEST(Transactions, ScriptsAndCallsCountTogether) {
    const auto session = openSession(":memory:together");
    (void)session->execute("BEGIN TRAN");
    session->begin();
    EXPECT_EQ(session->transactionDepth(), 2);
    session->commit();
    (void)session->execute("COMMIT TRAN");
    EXPECT_EQ(session->transactionDepth(), 0);
}

TEST(Transactions, CommitWithoutATransactionIsError3902) {
    const auto session = openSession(":memory:3902");
    const ServerMessage error = errorOf(*session, "COMMIT");
    EXPECT_EQ(error.nativeNumber, 3902);
    EXPECT_EQ(error.text, "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.");
}

TEST(Transactions, RollbackWithoutATransactionIsError3903) {
    const auto session = openSession(":memory:3903");
    const ServerMessage error = errorOf(*session, "ROLLBACK");
    EXPECT_EQ(error.nativeNumber, 3903);
    EXPECT_EQ(error.text,
              "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION.");
}

TEST(Transactions, AFailedStatementLeavesTheTransactionOpenAndWhatWasBeforeIt) {
    const auto session = openSession(":memory:failed");
    (void)session->execute("CREATE TABLE t (a int PRIMARY KEY)");
    session->begin();
    (void)session->execute("INSERT INTO t VALUES (1)");
    EXPECT_EQ(errorOf(*session, "INSERT INTO t VALUES (2), (1)").nativeNumber, 2627);
    EXPECT_EQ(session->transactionDepth(), 1);
    session->commit();
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "1");
}

TEST(Transactions, StatementsAroundAFailedOneStand) {
    const auto session = openSession(":memory:script");
    (void)session->execute("CREATE TABLE t (a int PRIMARY KEY)");
    EXPECT_EQ(errorOf(*session,
                      "INSERT INTO t VALUES (1); INSERT INTO t VALUES (1); "
                      "INSERT INTO t VALUES (2)")
                  .nativeNumber,
              2627);
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "1; 2");
}

TEST(Transactions, ClosingRollsAnOpenTransactionBack) {
    const TemporaryFolder folder;
    {
        const auto session = openSession(folder.file("a.db"));
        (void)session->execute("CREATE TABLE t (a int); BEGIN TRAN; INSERT INTO t VALUES (1)");
    }
    EXPECT_EQ(rowsOf(*openSession(folder.file("a.db")), "SELECT a FROM t"), "");
}

TEST(Transactions, TablesMadeInARolledBackTransactionAreGone) {
    const auto session = openSession(":memory:ddl");
    (void)session->execute("BEGIN TRAN; CREATE TABLE t (a int); INSERT INTO t VALUES (1)");
    EXPECT_EQ(rowsOf(*session, "SELECT a FROM t"), "1");
    session->rollback();
    EXPECT_EQ(errorOf(*session, "SELECT a FROM t").nativeNumber, 208);
    (void)session->execute("CREATE TABLE t (a int, b int); INSERT INTO t VALUES (1, 2)");
    EXPECT_EQ(rowsOf(*session, "SELECT * FROM t"), "1, 2");
}

TEST(Transactions, ReadersDoNotWaitForAWriter) {
    const TemporaryFolder folder;
    const auto writer = openSession(folder.file("a.db"));
    (void)writer->execute("CREATE TABLE t (a int); INSERT INTO t VALUES (1)");
    (void)writer->execute("BEGIN TRAN; UPDATE t SET a = 2");
    const auto reader = openSession(folder.file("a.db"), "Lock Timeout=0");
    EXPECT_EQ(rowsOf(*reader, "SELECT a FROM t"), "1");
    writer->commit();
    EXPECT_EQ(rowsOf(*reader, "SELECT a FROM t"), "2");
}

TEST(Transactions, ALockedDatabaseIsWaitedForAndThenAnError) {
    const TemporaryFolder folder;
    const auto holder = openSession(folder.file("a.db"));
    (void)holder->execute("CREATE TABLE t (a int)");
    const auto waiter = openSession(folder.file("a.db"), "Lock Timeout=1");
    (void)holder->execute("BEGIN TRAN; INSERT INTO t VALUES (1)");

    const ServerMessage error = errorOf(*waiter, "INSERT INTO t VALUES (2)");
    EXPECT_EQ(error.number, errors::kTimeout);
    EXPECT_EQ(error.nativeNumber, 1222);
    EXPECT_EQ(error.state, "HYT00");
    EXPECT_EQ(error.text, "Lock request time out period exceeded: the database '" +
                              folder.file("a.db") +
                              "' was still locked by another connection after 1 second.");
    EXPECT_EQ(waiter->transactionDepth(), 0);
    holder->commit();
    (void)waiter->execute("INSERT INTO t VALUES (2)");
    EXPECT_EQ(rowsOf(*waiter, "SELECT a FROM t ORDER BY a"), "1; 2");
}

TEST(Transactions, AWriterGoesOnWhenTheLockIsGivenUp) {
    const TemporaryFolder folder;
    const auto holder = openSession(folder.file("a.db"));
    (void)holder->execute("CREATE TABLE t (a int); BEGIN TRAN; INSERT INTO t VALUES (1)");
    std::thread other([&] {
        const auto session = openSession(folder.file("a.db"));
        (void)session->execute("INSERT INTO t VALUES (2)");
    });
    (void)holder->execute("INSERT INTO t VALUES (3); COMMIT");
    other.join();
    EXPECT_EQ(rowsOf(*holder, "SELECT a FROM t ORDER BY a"), "1; 2; 3");
}

TEST(Transactions, ProcessesThatWriteTogetherLoseNothing) {
    constexpr int kProcesses = 4;
    constexpr int kWrites = 50;
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))
        ->execute("CREATE TABLE t (n int); INSERT INTO t VALUES (0)");
    std::array<pid_t, kProcesses> children{};
    for (pid_t& child : children) {
        child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            try {
                const auto session = openSession(folder.file("a.db"), "Synchronous=Off");
                for (int i = 0; i < kWrites; ++i) {
                    (void)session->execute("UPDATE t SET n = n + 1");
                }
            } catch (const AutomationError&) {
                _exit(1);
            }
            _exit(0);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(rowsOf(*openSession(folder.file("a.db")), "SELECT n FROM t"), "200");
}

}  // namespace
}  // namespace kap::ado::embedded
