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

std::string globalAnswer(const Ref<ado::Connection>& connection, const std::string& query) {
    return shown(valueOf(connection, String(query)));
}

constexpr const char* kIsThere = "SELECT isnull(sign(object_id('tempdb..##g')), 0)";

TEST(GlobalTables, AreSharedWithOtherProcessesAndGoWhenTheirMakerDies) {
    const TemporaryFolder folder;
    const auto connection = open(folder.database());
    StartedProgram maker(
        "hold_session",
        std::vector<std::string>{folder.database(),
                                 "CREATE TABLE ##g (a int) INSERT INTO ##g VALUES (5)"});
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (globalAnswer(connection, kIsThere) == "Long 0" &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    connection->Execute(u"UPDATE ##g SET a = a + 1");
    EXPECT_EQ(globalAnswer(connection, "SELECT a FROM ##g"), "Long 6");
    // A connection that comes while the maker lives leaves it alone.
    EXPECT_EQ(globalAnswer(open(folder.database()), "SELECT a FROM ##g"), "Long 6");
    maker.kill();
    EXPECT_EQ(globalAnswer(open(folder.database()), kIsThere), "Long 0");
    EXPECT_EQ(globalAnswer(connection, kIsThere), "Long 0");
}

TEST(GlobalTables, EndWithTheConnectionThatMadeThem) {
    const TemporaryFolder folder;
    const auto other = open(folder.database());
    {
        const auto maker = open(folder.database());
        maker->Execute(u"CREATE TABLE ##g (a int IDENTITY)");
        maker->BeginTrans();
        maker->Execute(u"INSERT INTO ##g DEFAULT VALUES");
        maker->CommitTrans();
        EXPECT_EQ(globalAnswer(other, "SELECT count(*) FROM ##g"), "Long 1");
        maker->Close();
    }
    EXPECT_EQ(globalAnswer(other, kIsThere), "Long 0");
    other->Execute(u"CREATE TABLE ##g (b varchar(5))");
    EXPECT_EQ(globalAnswer(open(folder.database()), "SELECT count(*) FROM ##g"), "Long 0");
    EXPECT_EQ(globalAnswer(other, "SELECT count(*) FROM ##g"), "Long 0");
}

TEST(GlobalTables, AreGoneWhenTheirMakerClosesInTheMiddleOfATransaction) {
    const TemporaryFolder folder;
    const auto other = open(folder.database());
    {
        const auto maker = open(folder.database());
        maker->Execute(u"CREATE TABLE t (a int) CREATE TABLE ##g (a int)");
        maker->BeginTrans();
        maker->Execute(u"INSERT INTO t VALUES (1)");
    }
    EXPECT_EQ(globalAnswer(other, kIsThere), "Long 0");
    EXPECT_EQ(globalAnswer(other, "SELECT count(*) FROM t"), "Long 0");
}

}  // namespace
}  // namespace kap::test
