#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/database.hpp"
#include "support/shown.hpp"
#include "support/started_program.hpp"

namespace kap::test {
namespace {

std::string lockAnswer(const Ref<ado::Connection>& connection, const std::string& query) {
    return shown(valueOf(connection, String(query)));
}

TEST(ApplicationLocks, AreKnownToOtherProcessesAndFreeWhenTheseDie) {
    const TemporaryFolder folder;
    const auto connection = open(folder.database());
    const std::string isFree =
        "SELECT convert(int, applock_test('public', 'stampa', 'Exclusive', 'Session'))";
    EXPECT_EQ(lockAnswer(connection, isFree), "Long 1");
    StartedProgram holder(
        "hold_session",
        std::vector<std::string>{folder.database(),
                                 "EXEC sp_getapplock 'stampa', 'Exclusive', 'Session'"});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (lockAnswer(connection, isFree) == "Long 1" &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const std::string take =
        "SET NOCOUNT ON DECLARE @r int EXEC @r = sp_getapplock 'stampa', 'Shared', 'Session', 0 "
        "SELECT @r";
    EXPECT_EQ(lockAnswer(connection, take), "Long -1");
    holder.kill();
    EXPECT_EQ(lockAnswer(connection, take), "Long 0");
}

TEST(ApplicationLocks, OfTransactionsAreHeldUntilTheOutermostOneEnds) {
    const TemporaryFolder folder;
    const auto owner = open(folder.database());
    const auto other = open(folder.database());
    const std::string isFree =
        "SELECT convert(int, applock_test('public', 'a', 'Shared', 'Transaction'))";
    owner->Execute(u"CREATE TABLE t (a int)");
    owner->Execute(u"BEGIN TRAN BEGIN TRAN EXEC sp_getapplock 'a', 'Exclusive' COMMIT");
    EXPECT_EQ(lockAnswer(other, isFree), "Long 0");
    owner->Execute(u"COMMIT");
    EXPECT_EQ(lockAnswer(other, isFree), "Long 1");
    owner->Execute(u"CREATE TRIGGER tr ON t AFTER INSERT AS EXEC sp_getapplock 'a', 'Exclusive'");
    owner->Execute(u"INSERT INTO t VALUES (1)");
    EXPECT_EQ(lockAnswer(other, isFree), "Long 1");
    owner->BeginTrans();
    owner->Execute(u"INSERT INTO t VALUES (2)");
    EXPECT_EQ(lockAnswer(other, isFree), "Long 0");
    owner->RollbackTrans();
    EXPECT_EQ(lockAnswer(other, isFree), "Long 1");
}

TEST(ApplicationLocks, TellOneOfTwoThatWaitForEachOther) {
    const TemporaryFolder folder;
    const auto first = open(folder.database());
    const auto second = open(folder.database());
    first->Execute(u"EXEC sp_getapplock 'a', 'Exclusive', 'Session'");
    second->Execute(u"EXEC sp_getapplock 'b', 'Exclusive', 'Session'");
    const auto waits = [](const Ref<ado::Connection>& connection, const std::string& resource) {
        return lockAnswer(connection, "SET NOCOUNT ON DECLARE @r int EXEC @r = sp_getapplock '" +
                                          resource + "', 'Exclusive', 'Session', 60000 SELECT @r");
    };
    std::string other;
    std::thread waiting([&] {
        other = waits(second, "a");
        // The victim gives way, and the other one goes on.
        if (other == "Long -3") second->Execute(u"EXEC sp_releaseapplock 'b', 'Session'");
    });
    const std::string own = waits(first, "b");
    if (own == "Long -3") first->Execute(u"EXEC sp_releaseapplock 'a', 'Session'");
    waiting.join();
    EXPECT_EQ((own == "Long -3") + (other == "Long -3"), 1) << own << " and " << other;
    EXPECT_EQ((own == "Long 0") + (own == "Long 1") + (other == "Long 0") + (other == "Long 1"), 1);
}

}  // namespace
}  // namespace kap::test
