// A server that is there and does not answer any more: whatever waits for it is given up.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

#include <kaputil/data/error_numbers.hpp>

#include "relay.hpp"
#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::raisedBy;
using test::shown;

// A server of these tests' own, which each of them freezes.
class SilentServer : public ::testing::Test {
protected:
    void SetUp() override {
        if (server() == nullptr) {
            GTEST_SKIP() << "there is no database server to test with";
        }
    }
    void TearDown() override {
        if (server() != nullptr) {
            server()->thaw();
        }
    }
    static void TearDownTestSuite() { server().reset(); }

    static std::unique_ptr<test::Server>& server() {
        static std::unique_ptr<test::Server> made = test::Server::own();
        return made;
    }
    [[nodiscard]] static Ref<Connection> open(const std::string& more = {}) {
        const auto connection = test::open(server()->connection("postgres") + more);
        connection->setCommandTimeout(1);
        return connection;
    }
    static std::int32_t numberOf(const std::function<void()>& work) {
        return raisedBy([&] {
            work();
            return 0;
        });
    }
    static std::ptrdiff_t openFiles() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }
    // The connection is lost, can be closed, and opened again when the server goes on.
    static void expectLost(const Ref<Connection>& connection) {
        EXPECT_EQ(numberOf([&] { connection->Execute(u"SELECT 1"); }), errors::kUnspecified);
        EXPECT_EQ(connection->Errors()->Item(0)->SQLState(), String(u"08S01"));
        server()->thaw();
        connection->Close();
        connection->Open();
        EXPECT_EQ(shown(test::valueOf(connection, u"SELECT 1")), "Long 1");
    }
};

TEST_F(SilentServer, InMidStatementIsGivenUpInTime) {
    const auto connection = open();
    connection->Execute(u"SELECT 1");
    server()->freeze();
    EXPECT_EQ(numberOf([&] { connection->Execute(u"SELECT 2"); }), errors::kTimeout);
    EXPECT_EQ(connection->Errors()->Count(), 1);
    EXPECT_EQ(connection->Errors()->Item(0)->SQLState(), String(u"HYT00"));
    EXPECT_EQ(connection->Errors()->Item(0)->Description(),
              String(u"The database server has not answered in time. The connection to it has been "
                     u"given up: close it and open it again."));
    expectLost(connection);
}

TEST_F(SilentServer, InMidFetchFailsTheMovement) {
    const auto connection = open(";UseDeclareFetch=1;Fetch=100");
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT generate_series(1, 100000) AS a", Variant(connection));
    server()->freeze();
    EXPECT_EQ(numberOf([&] { rows->MoveLast(); }), errors::kTimeout);
    EXPECT_EQ(shown(test::fieldOf(rows, 0)), "Long 1");
    rows->Close();
    expectLost(connection);
}

TEST_F(SilentServer, RowsThatNobodyFetchesAreLeftInTime) {
    const auto connection = open(";UseDeclareFetch=1;Fetch=100");
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT generate_series(1, 100000) AS a", Variant(connection));
    server()->freeze();
    rows->Close();
    expectLost(connection);
}

TEST_F(SilentServer, WhileARowIsWrittenFailsTheUpdate) {
    const auto connection = open();
    connection->Execute(
        u"CREATE TABLE IF NOT EXISTS voci (a int PRIMARY KEY, b int);"
        u"INSERT INTO voci VALUES (1, 1) ON CONFLICT DO NOTHING");
    const auto rows = test::openLive(connection, u"SELECT * FROM voci");
    server()->freeze();
    EXPECT_EQ(numberOf([&] { rows->Update(u"b", 2); }), errors::kTimeout);
    rows->CancelUpdate();
    rows->Close();
    expectLost(connection);
}

TEST_F(SilentServer, ACommitWithoutAnswerSaysThatItsOutcomeIsNotKnown) {
    const auto connection = open();
    connection->BeginTrans();
    connection->Execute(u"CREATE TABLE vuota (a int)");
    server()->freeze();
    EXPECT_EQ(numberOf([&] { connection->CommitTrans(); }), errors::kTimeout);
    EXPECT_NE(connection->Errors()->Item(0)->Description().utf8().find(
                  "Whether the transaction has been committed is not known."),
              std::string::npos);
    expectLost(connection);
}

TEST_F(SilentServer, ATransactionIsUndoneWithoutIt) {
    const auto connection = open();
    connection->BeginTrans();
    connection->Execute(u"CREATE TABLE sparita (a int)");
    server()->freeze();
    connection->RollbackTrans();
    expectLost(connection);
    EXPECT_EQ(numberOf([&] { connection->Execute(u"SELECT * FROM sparita"); }),
              errors::kUnknownObject);
}

TEST_F(SilentServer, DoesNotHinderEnding) {
    const auto before = openFiles();
    auto connection = open();
    connection->setCommandTimeout(0);
    connection->BeginTrans();
    connection->Execute(u"SELECT 1");
    server()->freeze();
    connection = {};
    EXPECT_EQ(openFiles(), before);
}

TEST_F(SilentServer, DoesNotHinderOtherConnections) {
    const auto connection = open();
    const auto other = test::open("Provider=KapLocal;Data Source=:memory:");
    test::Server* shared = test::Server::shared();
    const auto elsewhere = test::open(shared->connection("postgres"));
    server()->freeze();
    EXPECT_EQ(numberOf([&] { connection->Execute(u"SELECT 2"); }), errors::kTimeout);
    EXPECT_EQ(shown(test::valueOf(elsewhere, u"SELECT 1")), "Long 1");
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT 1")), "Long 1");
}

TEST_F(SilentServer, IsGivenUpWhileConnecting) {
    const auto before = openFiles();
    server()->freeze();
    const std::int32_t number = numberOf([] { static_cast<void>(open(";Connect Timeout=1")); });
    EXPECT_TRUE(number == errors::kLogin || number == errors::kTimeout) << number;
    EXPECT_EQ(openFiles(), before);
}

// The driver asks several things when it is already connected, and waits for their answers without
// limit.
TEST_F(SilentServer, IsGivenUpInEveryStepOfConnecting) {
    int steps = 0;
    {
        test::Relay relay(server()->port());
        test::open(server()->connection("postgres", relay.port()));
        steps = relay.roundTrips();
    }
    ASSERT_GT(steps, 2);
    for (int step = 0; step < steps; ++step) {
        test::Relay relay(server()->port());
        relay.fallSilentAfter(step);
        const std::int32_t number = numberOf([&] {
            test::open(server()->connection("postgres", relay.port()) + ";Connect Timeout=1");
        });
        EXPECT_TRUE(number == errors::kLogin || number == errors::kTimeout)
            << "step " << step << ": " << number;
    }
}

}  // namespace
}  // namespace kap::ado
