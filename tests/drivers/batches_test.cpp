// A text of several statements: its results come one by one, and another thread ends it.
#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "replay.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

constexpr const char* kTwoWithAFailureBetween = R"(
> SELECT 1; SELECT 1/0; SELECT 2
columns a int
row 1
error 22012 8134 [FreeTDS][SQL Server]Divide by zero error encountered.
columns b int
row 2
row 3
)";

TEST(ReplayedBatches, RaiseTheFailureOfALaterStatementWhereItsResultIsAskedFor) {
    test::Replay replay(kTwoWithAFailureBetween);
    const auto connection = replay.open();
    const auto first = connection->Execute(u"SELECT 1; SELECT 1/0; SELECT 2");
    EXPECT_EQ(shown(fieldOf(first, 0)), "Long 1");
    EXPECT_EQ(connection->Errors()->Count(), 0);
    EXPECT_EQ(raisedBy([&] { first->NextRecordset(); }), errors::kCommandText);
    EXPECT_EQ(connection->Errors()->Item(0)->NativeError(), 8134);
    const auto second = first->NextRecordset();
    ASSERT_TRUE(second);
    EXPECT_EQ(shown(fieldOf(second, u"b")), "Long 2");
    second->MoveNext();
    EXPECT_EQ(shown(fieldOf(second, u"b")), "Long 3");
    EXPECT_FALSE(second->NextRecordset());
}

TEST(ReplayedBatches, AreTakenIntoMemoryBeforeAnotherStatement) {
    test::Replay replay(std::string(kTwoWithAFailureBetween) + R"(
> UPDATE t SET a = 1
count 4
)");
    const auto connection = replay.open();
    const auto first = connection->Execute(u"SELECT 1; SELECT 1/0; SELECT 2");
    connection->Execute(u"UPDATE t SET a = 1");
    const auto second = first->NextRecordset();
    ASSERT_TRUE(second);
    EXPECT_EQ(shown(fieldOf(second, u"b")), "Long 2");
    EXPECT_EQ(raisedBy([&] { second->NextRecordset(); }), errors::kCommandText);
    EXPECT_FALSE(second->NextRecordset());
}

TEST(ReplayedBatches, ThatWriteAreRunToTheirEndAtOnce) {
    test::Replay replay(R"(
> SELECT 1; DELETE FROM t
columns a int
row 1
error 23000 547 [FreeTDS][SQL Server]The DELETE statement conflicted
)");
    const auto connection = replay.open();
    EXPECT_EQ(raisedBy([&] { connection->Execute(u"SELECT 1; DELETE FROM t"); }),
              errors::kIntegrity);
}

TEST(ReplayedBatches, MayBeLeftInTheMiddle) {
    test::Replay replay(std::string(kTwoWithAFailureBetween) + R"(
> SELECT 5
columns a int
row 5
)");
    const auto connection = replay.open();
    connection->Execute(u"SELECT 1; SELECT 1/0; SELECT 2");
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT 5")), "Long 5");
}

TEST(ReplayedBatches, OfAClosedConnectionHaveNothingBehind) {
    test::Replay replay(kTwoWithAFailureBetween);
    const auto connection = replay.open();
    const auto first = connection->Execute(u"SELECT 1; SELECT 1/0; SELECT 2");
    connection->Close();
    EXPECT_EQ(test::raisedBy([&] { first->NextRecordset(); }), errors::kObjectClosed);
}

TEST(ReplayedBatches, TellWhatEachStatementPrintsWithItsResult) {
    test::Replay replay(R"(
> SELECT 1; PRINT 'due'; SELECT 2
columns a int
row 1
info 01000 0 [FreeTDS][SQL Server]due
columns a int
row 2
)");
    const auto connection = replay.open();
    const auto first = connection->Execute(u"SELECT 1; PRINT 'due'; SELECT 2");
    EXPECT_EQ(connection->Errors()->Count(), 0);
    EXPECT_EQ(shown(fieldOf(first->NextRecordset(), 0)), "Long 2");
    ASSERT_EQ(connection->Errors()->Count(), 1);
    EXPECT_EQ(connection->Errors()->Item(0)->Description().utf8(), "due");
}

// Cancels whatever runs until `work` has come back.
std::int32_t raisedByEnded(const Connection& connection, const std::function<void()>& work) {
    std::atomic<bool> over{false};
    std::thread other([&] {
        while (!over) {
            connection.Cancel();
            std::this_thread::yield();
        }
    });
    const std::int32_t raised = raisedBy(work);
    over = true;
    other.join();
    return raised;
}

TEST(ReplayedBatches, AreEndedByAnotherThread) {
    test::Replay replay(R"(
> SELECT 1; SELECT 2
columns a int
row 1
waits
error HY008 0 [FreeTDS][SQL Server]Operation was cancelled
> EXEC lenta
waits
error HY000 0 [FreeTDS][SQL Server]attention
> EXEC quieta
waits
count 3
> SELECT 5
columns a int
row 5
)");
    const auto connection = replay.open();
    const auto first = connection->Execute(u"SELECT 1; SELECT 2");
    EXPECT_EQ(raisedByEnded(*connection, [&] { first->NextRecordset(); }),
              errors::kOperationCancelled);
    EXPECT_EQ(raisedByEnded(*connection, [&] { connection->Execute(u"EXEC lenta"); }),
              errors::kOperationCancelled);
    // Some drivers answer as if nothing more had been to come.
    EXPECT_EQ(raisedByEnded(*connection, [&] { connection->Execute(u"EXEC quieta"); }),
              errors::kOperationCancelled);
    EXPECT_EQ(shown(test::valueOf(connection, u"SELECT 5")), "Long 5");
}

}  // namespace
}  // namespace kap::ado
