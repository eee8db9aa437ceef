// Connections that the process keeps when clients have closed them.
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

#include <kaputil/data/error_numbers.hpp>

#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::raisedBy;
using test::shown;

class ServerPool : public test::ServerTest {
protected:
    [[nodiscard]] Ref<Connection> pooled(const std::string& more = ";Pooling=True") const {
        return database_->open(more);
    }
    // The number of the server's process for a connection.
    static std::string processOf(const Ref<Connection>& connection) {
        return shown(test::valueOf(connection, u"SELECT pg_backend_pid()"));
    }
    void endAllOthers() const {
        (void)value(
            "SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity WHERE datname = "
            "current_database() AND pid <> pg_backend_pid()");
        while (value("SELECT count(*) FROM pg_stat_activity WHERE datname = current_database()") !=
               "Decimal 1") {
        }
    }
    // What the next client is given by the pool behind one that ran this.
    [[nodiscard]] bool isKeptBehind(const String& script,
                                    const std::string& more = ";Pooling=True") const {
        auto first = pooled(more);
        const std::string process = processOf(first);
        first->Execute(script);
        first->Close();
        return processOf(pooled(more)) == process;
    }
};

TEST_F(ServerPool, GivesAClosedConnectionToTheNextWhoWantsTheSame) {
    run("CREATE TABLE t (a int)");
    EXPECT_TRUE(isKeptBehind(u"INSERT INTO t VALUES (1)"));
    EXPECT_TRUE(isKeptBehind(u"UPDATE t SET a = 2", ";OLE DB Services=-1"));
    EXPECT_TRUE(isKeptBehind(u"SELECT * FROM t"));
}

TEST_F(ServerPool, IsThereForThoseOnlyWhoAskForIt) {
    EXPECT_FALSE(isKeptBehind(u"SELECT 1", ""));
    EXPECT_FALSE(isKeptBehind(u"SELECT 1", ";OLE DB Services=-2"));
    EXPECT_FALSE(isKeptBehind(u"SELECT 1", ";OLE DB Services=-1;Pooling=False"));
    EXPECT_EQ(raisedBy([&] { (void)pooled(";Pooling=True;Max Pool Size=0"); }),
              errors::kInvalidArgument);
}

TEST_F(ServerPool, KeepsNoConnectionOnWhichSomethingWasLeft) {
    for (const char16_t* script :
         {u"SET application_name = 'x'", u"CREATE TEMP TABLE #x (a int)",
          u"SELECT set_config('work_mem', '1MB', false)", u"SELECT pg_advisory_lock(1)", u"BEGIN",
          u"PREPARE p AS SELECT 1"}) {
        try {
            EXPECT_FALSE(isKeptBehind(script)) << String(script).utf8();
        } catch (const AutomationError&) {
            // Refused is as good.
        }
    }
    auto transaction = pooled();
    const std::string process = processOf(transaction);
    transaction->BeginTrans();
    transaction = {};
    EXPECT_NE(processOf(pooled()), process);
}

TEST_F(ServerPool, KeepsAConnectionBehindATransactionThatHasEnded) {
    run("CREATE TABLE t (a int)");
    auto first = pooled();
    const std::string process = processOf(first);
    first->BeginTrans();
    first->Execute(u"INSERT INTO t VALUES (1)");
    first->CommitTrans();
    first->Close();
    EXPECT_EQ(processOf(pooled()), process);
}

TEST_F(ServerPool, GivesNoConnectionThatTheServerHasEnded) {
    auto first = pooled();
    first->Close();
    endAllOthers();
    EXPECT_EQ(shown(test::valueOf(pooled(), u"SELECT 7")), "Long 7");
}

TEST_F(ServerPool, ReconnectsWhereNothingIsLost) {
    run("CREATE TABLE t (a int PRIMARY KEY)");
    auto connection = pooled();
    const auto rows = test::openLive(connection, u"SELECT * FROM t");
    connection->Execute(u"INSERT INTO t VALUES (1)");
    endAllOthers();
    connection->Execute(u"INSERT INTO t VALUES (2)");
    endAllOthers();
    rows->AddNew();
    rows->Fields()->Item(0)->setValue(3);
    rows->Update();
    EXPECT_EQ(value("SELECT sum(a) FROM t"), "Decimal 6");
}

TEST_F(ServerPool, TellsTheLossWhereSomethingIs) {
    run("CREATE TABLE t (a int)");
    const auto isTold = [&](const Ref<Connection>& connection) {
        endAllOthers();
        return raisedBy([&] { connection->Execute(u"INSERT INTO t VALUES (1)"); }) ==
               errors::kUnspecified;
    };
    auto transaction = pooled();
    transaction->BeginTrans();
    EXPECT_TRUE(isTold(transaction));
    auto setting = pooled();
    setting->Execute(u"SET work_mem = '1MB'");
    EXPECT_TRUE(isTold(setting));
    EXPECT_TRUE(isTold(database_->open()));
    EXPECT_EQ(value("SELECT count(*) FROM t"), "Decimal 0");
}

TEST_F(ServerPool, KeepsAConnectionNoLongerThanItsLifetime) {
    EXPECT_TRUE(isKeptBehind(u"SELECT 1", ";Pooling=True;Connection Lifetime=3600"));
    const std::string brief = ";Pooling=True;Connection Lifetime=1";
    auto first = pooled(brief);
    const std::string process = processOf(first);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    first->Close();
    EXPECT_NE(processOf(pooled(brief)), process);
}

TEST_F(ServerPool, KeepsNoMoreConnectionsThanItMay) {
    const std::string one = ";Pooling=True;Max Pool Size=1";
    std::set<std::string> processes;
    {
        const auto first = pooled(one);
        const auto second = pooled(one);
        processes = {processOf(first), processOf(second)};
    }
    const auto first = pooled(one);
    const auto second = pooled(one);
    EXPECT_TRUE(processes.contains(processOf(first)));
    EXPECT_FALSE(processes.contains(processOf(second)));
}

TEST_F(ServerPool, IsOfOneConnectionStringOnly) {
    auto first = pooled();
    const std::string process = processOf(first);
    first->Close();
    EXPECT_NE(processOf(pooled(";Pooling=True;ApplicationIntent=ReadOnly")), process);
    EXPECT_EQ(processOf(pooled()), process);
}

TEST_F(ServerPool, OfCopiesForReadingConnectsToTheServerWhereThereIsNone) {
    EXPECT_EQ(shown(test::valueOf(pooled(";ApplicationIntent=ReadOnly"), u"SELECT 7")), "Long 7");
    EXPECT_EQ(raisedBy([&] { (void)pooled(";ApplicationIntent=Sometimes"); }),
              errors::kInvalidArgument);
}

}  // namespace
}  // namespace kap::ado
