// Texts of several statements on a database server, and ending what runs there.
#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class ServerBatches : public test::ServerTest {
protected:
    // Cancels whatever runs until `work` has come back.
    [[nodiscard]] std::int32_t raisedByEnded(const std::function<void()>& work) const {
        std::atomic<bool> over{false};
        std::thread other([&] {
            while (!over) {
                connection_->Cancel();
                std::this_thread::yield();
            }
        });
        const std::int32_t raised = raisedBy(work);
        over = true;
        other.join();
        return raised;
    }
};

TEST_F(ServerBatches, GiveTheirResultsOneByOne) {
    auto rows = connection_->Execute(
        u"SELECT n FROM generate_series(1, 3000) AS n; SELECT 'due' AS t; SELECT 3 AS c");
    std::int32_t count = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
        ++count;
    }
    EXPECT_EQ(count, 3000);
    rows = rows->NextRecordset();
    ASSERT_TRUE(rows);
    EXPECT_EQ(shown(fieldOf(rows, u"t")), "String due");
    rows = rows->NextRecordset();
    ASSERT_TRUE(rows);
    EXPECT_EQ(shown(fieldOf(rows, u"c")), "Long 3");
    EXPECT_FALSE(rows->NextRecordset());
}

TEST_F(ServerBatches, MayBeLeftInTheMiddleOrReadAroundAnotherStatement) {
    const auto rows = connection_->Execute(u"SELECT 1 AS a; SELECT 2 AS b; SELECT 3 AS c");
    EXPECT_EQ(value("SELECT 5"), "Long 5");
    const auto second = rows->NextRecordset();
    ASSERT_TRUE(second);
    EXPECT_EQ(shown(fieldOf(second, u"b")), "Long 2");
    run("CREATE TABLE t (a int)");
    EXPECT_EQ(shown(fieldOf(second->NextRecordset(), u"c")), "Long 3");
}

// The driver sends the text as one, and answers when the server has run all of it.
TEST_F(ServerBatches, FailAtOnceWhereverAStatementFails) {
    EXPECT_EQ(raisedBy([&] { connection_->Execute(u"SELECT 1 AS a; SELECT 1/0; SELECT 2"); }),
              errors::kCommandText);
    EXPECT_EQ(value("SELECT 5"), "Long 5");
}

TEST_F(ServerBatches, AreEndedByAnotherThread) {
    connection_->setCommandTimeout(0);
    EXPECT_EQ(raisedByEnded([&] { connection_->Execute(u"SELECT pg_sleep(600)"); }),
              errors::kOperationCancelled);
    EXPECT_EQ(connection_->Errors()->Item(0)->SQLState(), String(u"57014"));
    EXPECT_EQ(raisedByEnded([&] { connection_->Execute(u"SELECT 1; SELECT pg_sleep(600)"); }),
              errors::kOperationCancelled);
    EXPECT_EQ(value("SELECT 5"), "Long 5");
}

TEST_F(ServerBatches, AChangeOfARecordThatWaitsForAnotherTransactionIsEnded) {
    run("CREATE TABLE t (a int PRIMARY KEY, b int); INSERT INTO t VALUES (1, 1)");
    const auto rows = live("SELECT * FROM t");
    const auto other = database_->open();
    other->BeginTrans();
    other->Execute(u"UPDATE t SET b = 2");
    EXPECT_EQ(raisedByEnded([&] { rows->Update(u"b", 3); }), errors::kOperationCancelled);
    EXPECT_EQ(connection_->Errors()->Item(0)->SQLState(), String(u"57014"));
    rows->CancelUpdate();
    EXPECT_EQ(raisedByEnded([&] { rows->Delete(); }), errors::kOperationCancelled);
    other->RollbackTrans();
    rows->Update(u"b", 4);
    EXPECT_EQ(value("SELECT b FROM t"), "Long 4");
}

TEST_F(ServerBatches, InTheBackgroundAreEndedByCancel) {
    connection_->setCommandTimeout(0);
    const auto rows =
        connection_->Execute(u"SELECT pg_sleep(600)", Variant::missing(),
                             static_cast<std::int32_t>(ExecuteOptionEnum::adAsyncExecute));
    connection_->Cancel();
    while (rows->State() == ObjectStateEnum::adStateExecuting) {
        std::this_thread::yield();
    }
    ASSERT_EQ(connection_->Errors()->Count(), 1);
    EXPECT_EQ(connection_->Errors()->Item(0)->Number(), errors::kOperationCancelled);
    EXPECT_EQ(value("SELECT 5"), "Long 5");
}

TEST_F(ServerBatches, OfRowsThatComeAsTheServerMakesThemAreEndedWhileTheyAreRead) {
    const auto connection = database_->open(";UseDeclareFetch=1;Fetch=100");
    const auto rows = connection->Execute(
        u"SELECT n, CASE WHEN n > 2000 THEN pg_sleep(600) END FROM generate_series(1, 5000) AS n");
    std::atomic<bool> over{false};
    std::thread other([&] {
        while (!over) {
            connection->Cancel();
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(raisedBy([&] {
                  while (!rows->Eof()) {
                      rows->MoveNext();
                  }
              }),
              errors::kOperationCancelled);
    over = true;
    other.join();
}

}  // namespace
}  // namespace kap::ado
