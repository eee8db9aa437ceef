#include "engine/catalog/counters.hpp"

#include <set>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <kaputil/data/error_numbers.hpp>

#include "drivers/embedded/session_support.hpp"
#include "support/database.hpp"

namespace kap::ado::embedded {
namespace {

using kap::test::TemporaryFolder;
using test::openSession;
using test::rowsOf;

TEST(Counters, IdentitiesBeginAtTheSeedAndGoUpByTheStep) {
    const auto session = openSession(":memory:identity-steps");
    (void)session->execute(
        "CREATE TABLE t (id int IDENTITY(10, 5), a int); INSERT INTO t (a) VALUES (1), (2); "
        "INSERT INTO t (a) VALUES (3)");
    EXPECT_EQ(rowsOf(*session, "SELECT id, a FROM t ORDER BY a"), "10, 1; 15, 2; 20, 3");
}

TEST(Counters, IdentitiesMayGoDown) {
    const auto session = openSession(":memory:identity-down");
    (void)session->execute(
        "CREATE TABLE t (id int IDENTITY(0, -1), a int); INSERT INTO t (a) VALUES (1), (2)");
    EXPECT_EQ(rowsOf(*session, "SELECT id FROM t ORDER BY a"), "0; -1");
}

TEST(Counters, TwoConnectionsNeverGetTheSameIdentity) {
    const TemporaryFolder folder;
    const auto first = openSession(folder.file("a.db"));
    const auto second = openSession(folder.file("a.db"));
    (void)first->execute("CREATE TABLE t (id int IDENTITY PRIMARY KEY, who char(1))");
    for (int i = 0; i < 3; ++i) {
        (void)first->execute("INSERT INTO t (who) VALUES ('a')");
        (void)second->execute("INSERT INTO t (who) VALUES ('b')");
    }
    EXPECT_EQ(rowsOf(*first, "SELECT id, who FROM t ORDER BY id"),
              "1, 'a'; 2, 'b'; 3, 'a'; 4, 'b'; 5, 'a'; 6, 'b'");
}

TEST(Counters, IdentitiesOfARolledBackTransactionAreNotGivenOutAgain) {
    const TemporaryFolder folder;
    const auto session = openSession(folder.file("a.db"));
    (void)session->execute("CREATE TABLE t (id int IDENTITY, a int)");
    (void)session->execute("BEGIN TRAN; INSERT INTO t (a) VALUES (1); ROLLBACK");
    (void)session->execute("INSERT INTO t (a) VALUES (2)");
    EXPECT_EQ(rowsOf(*session, "SELECT id, a FROM t"), "2, 2");
    const auto other = openSession(folder.file("a.db"));
    (void)other->execute("INSERT INTO t (a) VALUES (3)");
    EXPECT_EQ(rowsOf(*other, "SELECT id, a FROM t ORDER BY id"), "2, 2; 3, 3");
}

TEST(Counters, IdentitiesOfAFailedStatementAreNotGivenOutAgainByItsConnection) {
    const auto session = openSession(":memory:identity-failed");
    (void)session->execute("CREATE TABLE t (id int IDENTITY, a int PRIMARY KEY)");
    (void)session->execute("INSERT INTO t (a) VALUES (1)");
    EXPECT_EQ(test::errorOf(*session, "INSERT INTO t (a) VALUES (1)").nativeNumber, 2627);
    (void)session->execute("INSERT INTO t (a) VALUES (2)");
    EXPECT_EQ(rowsOf(*session, "SELECT id, a FROM t ORDER BY id"), "1, 1; 3, 2");
}

TEST(Counters, AnIdentityBeyondItsTypeIsAnError) {
    const auto session = openSession(":memory:identity-end");
    (void)session->execute(
        "CREATE TABLE t (id int IDENTITY(2147483647, 1), a int); INSERT INTO t (a) VALUES (1)");
    const ServerMessage error = test::errorOf(*session, "INSERT INTO t (a) VALUES (2)");
    EXPECT_EQ(error.nativeNumber, 8115);
    EXPECT_EQ(error.text, "Arithmetic overflow error converting IDENTITY to data type int.");
}

TEST(Counters, ATableMadeAnewBeginsAnew) {
    const auto session = openSession(":memory:identity-anew");
    const char* make = "CREATE TABLE t (id int IDENTITY, a int); INSERT INTO t (a) VALUES (1)";
    (void)session->execute(make);
    (void)session->execute("DROP TABLE t");
    (void)session->execute(make);
    EXPECT_EQ(rowsOf(*session, "SELECT id FROM t"), "1");
}

TEST(Counters, RowVersionsAreEightBytesAndChangeWithEveryWrite) {
    const auto session = openSession(":memory:versions");
    (void)session->execute(
        "CREATE TABLE t (a int, v timestamp); INSERT INTO t (a) VALUES (1), (2)");
    EXPECT_EQ(rowsOf(*session, "SELECT v FROM t ORDER BY a"),
              "0x00000000000007D1; 0x00000000000007D2");
    (void)session->execute("UPDATE t SET a = 1 WHERE a = 1");
    EXPECT_EQ(rowsOf(*session, "SELECT v FROM t ORDER BY a"),
              "0x00000000000007D3; 0x00000000000007D2");
}

TEST(Counters, TablesShareOneCounterOfRowVersions) {
    const auto session = openSession(":memory:versions-shared");
    (void)session->execute(
        "CREATE TABLE t (a int, v timestamp); CREATE TABLE u (a int, v rowversion);"
        "INSERT INTO t (a) VALUES (1); INSERT INTO u (a) VALUES (1)");
    EXPECT_EQ(rowsOf(*session, "SELECT v FROM t UNION ALL SELECT v FROM u ORDER BY 1"),
              "0x00000000000007D1; 0x00000000000007D2");
}

// A client that has seen the version of a change that was undone must not take somebody else's
// change for it.
TEST(Counters, RowVersionsOfARolledBackTransactionAreNotGivenOutAgainByOthers) {
    const TemporaryFolder folder;
    const auto first = openSession(folder.file("a.db"));
    const auto second = openSession(folder.file("a.db"));
    (void)first->execute("CREATE TABLE t (a int, v timestamp); INSERT INTO t (a) VALUES (1)");
    first->begin();
    (void)first->execute("UPDATE t SET a = 2");
    const std::string seen = rowsOf(*first, "SELECT v FROM t");
    first->rollback();
    (void)second->execute("UPDATE t SET a = 3");
    EXPECT_NE(rowsOf(*second, "SELECT v FROM t"), seen);
}

TEST(Counters, AreNotSeenAsATable) {
    const auto session = openSession(":memory:hidden");
    (void)session->execute("CREATE TABLE t (id int IDENTITY)");
    EXPECT_EQ(test::errorOf(*session, "SELECT * FROM kap_counters").nativeNumber, 208);
}

TEST(Counters, ARollbackMayTakeTheCountersThemselvesAway) {
    const auto session = openSession(":memory:counters-undone");
    (void)session->execute(
        "BEGIN TRAN; CREATE TABLE t (id int IDENTITY, v timestamp); "
        "INSERT INTO t DEFAULT VALUES; ROLLBACK");
    EXPECT_EQ(test::errorOf(*session, "SELECT * FROM t").nativeNumber, 208);
    (void)session->execute(
        "CREATE TABLE t (id int IDENTITY, v timestamp); INSERT INTO t DEFAULT VALUES");
    EXPECT_EQ(rowsOf(*session, "SELECT id FROM t"), "1");
}

TEST(Counters, TwoProcessesNeverGetTheSameNumber) {
    constexpr int kRows = 100;
    const TemporaryFolder folder;
    (void)openSession(folder.file("a.db"))
        ->execute("CREATE TABLE t (id int IDENTITY, who int, v timestamp)");
    const auto insertRows = [&](const std::string& who) {
        const auto session = openSession(folder.file("a.db"), "Synchronous=Off");
        for (int i = 0; i < kRows; ++i) {
            (void)session->execute("INSERT INTO t (who) VALUES (" + who + ")");
        }
    };
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        try {
            insertRows("1");
        } catch (const AutomationError&) {
            _exit(1);
        }
        _exit(0);
    }
    insertRows("2");
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);

    const Result result =
        openSession(folder.file("a.db"))->execute("SELECT id, v FROM t ORDER BY id").back();
    ASSERT_EQ(result.rows[0].size(), 2U * kRows);
    std::set<std::string> versions;
    for (std::size_t row = 0; row < result.rows[0].size(); ++row) {
        EXPECT_EQ(result.rows[0].integer(row), static_cast<std::int64_t>(row + 1));
        versions.insert(std::string(result.rows[1].bytes(row)));
    }
    EXPECT_EQ(versions.size(), 2U * kRows);
}

}  // namespace
}  // namespace kap::ado::embedded
