// Cancel, called while another thread waits for a call to end.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado {
namespace {

constexpr const char16_t* kEndless =
    u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c) "
    u"SELECT COUNT(*) FROM c OPTION (MAXRECURSION 0)";

bool isExecuting(const Connection& connection) {
    return (static_cast<std::int32_t>(connection.State()) &
            static_cast<std::int32_t>(ObjectStateEnum::adStateExecuting)) != 0;
}

// Cancels each call that `work` makes.
std::int32_t raisedByCancelled(Connection& connection, const std::function<void()>& work) {
    std::atomic<bool> over{false};
    std::thread other([&] {
        while (!over) {
            if (isExecuting(connection)) {
                connection.Cancel();
            }
            std::this_thread::yield();
        }
    });
    const std::int32_t raised = test::raisedBy(work);
    over = true;
    other.join();
    return raised;
}

TEST(Cancel, EndsAQueryAndTheConnectionGoesOn) {
    const auto connection = test::open("Provider=KapLocal;Data Source=:memory:cancel");
    connection->setCommandTimeout(0);
    EXPECT_EQ(raisedByCancelled(*connection, [&] { connection->Execute(kEndless); }),
              errors::kOperationCancelled);
    EXPECT_FALSE(isExecuting(*connection));
    EXPECT_EQ(test::shown(test::valueOf(connection, u"SELECT 1")), "Long 1");
}

TEST(Cancel, EndsALoopOfAScript) {
    const auto connection = test::open("Provider=KapLocal;Data Source=:memory:cancel");
    EXPECT_EQ(raisedByCancelled(*connection,
                                [&] { connection->Execute(u"WHILE 1 = 1 BEGIN PRINT 'x' END"); }),
              errors::kOperationCancelled);
    EXPECT_EQ(
        raisedByCancelled(*connection, [&] { connection->Execute(u"WAITFOR DELAY '00:10:00'"); }),
        errors::kOperationCancelled);
}

// Another connection has the file's lock, which every change of a row waits for.
TEST(Cancel, EndsTheChangeOfARecordThatWaits) {
    const test::TemporaryFolder folder;
    const auto file = folder.database();
    const auto connection = test::open(file);
    connection->Execute(u"CREATE TABLE T (A int PRIMARY KEY, B int); INSERT INTO T VALUES (1, 1)");
    const auto rows = test::openLive(connection, u"SELECT * FROM T");
    const auto other = test::open(file);
    other->BeginTrans();
    other->Execute(u"UPDATE T SET B = 2");
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(raisedByCancelled(*connection, [&] { rows->Update(u"B", 3); }),
              errors::kOperationCancelled);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditInProgress);
    rows->CancelUpdate();
    EXPECT_EQ(raisedByCancelled(*connection, [&] { rows->Delete(); }), errors::kOperationCancelled);
    EXPECT_EQ(raisedByCancelled(*connection, [&] { rows->AddNew(u"A", 2); }),
              errors::kOperationCancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
    rows->CancelUpdate();
    other->RollbackTrans();
    rows->Update(u"B", 4);
    EXPECT_EQ(test::shown(test::valueOf(connection, u"SELECT B FROM T")), "Long 4");
}

TEST(Cancel, EndsABatchOfWhichTheRestGoesOnWaiting) {
    const test::TemporaryFolder folder;
    const auto file = folder.database();
    const auto connection = test::open(file);
    connection->Execute(
        u"CREATE TABLE T (A int PRIMARY KEY, B int); INSERT INTO T VALUES (1, 1), (2, 2)");
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT * FROM T", Variant(connection), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockBatchOptimistic);
    for (; !rows->Eof(); rows->MoveNext()) {
        rows->Update(u"B", 9);
    }
    const auto other = test::open(file);
    other->BeginTrans();
    other->Execute(u"UPDATE T SET B = 2");
    EXPECT_EQ(raisedByCancelled(*connection, [&] { rows->UpdateBatch(); }),
              errors::kOperationCancelled);
    EXPECT_EQ(connection->Errors()->Count(), 1);
    other->RollbackTrans();
    rows->UpdateBatch();
    EXPECT_EQ(test::shown(test::valueOf(connection, u"SELECT SUM(B) FROM T")), "Long 18");
}

TEST(Cancel, FindsNothingToEndWhenNothingRuns) {
    const auto connection = make<Connection>();
    connection->Cancel();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:cancel");
    connection->Cancel();
    EXPECT_EQ(test::shown(test::valueOf(connection, u"SELECT 1")), "Long 1");
}

}  // namespace
}  // namespace kap::ado
