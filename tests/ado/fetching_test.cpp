// Rows that the database sends later, and connections that fail before it has.
#include <gtest/gtest.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/fake_driver.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class FetchingTest : public ::testing::Test {
protected:
    FetchingTest() : connection_(test::open("Provider=Fake")) {}

    [[nodiscard]] Ref<Recordset> openNumbers(int count, int failures, std::int32_t maxRecords = 0) {
        driver_.database.answer({test::numbersInPieces(count, failures)});
        const auto rows = make<Recordset>();
        rows->setCursorLocation(CursorLocationEnum::adUseClient);
        rows->setMaxRecords(maxRecords);
        rows->Open(u"SELECT N", Variant(connection_), CursorTypeEnum::adOpenStatic,
                   LockTypeEnum::adLockOptimistic);
        return rows;
    }

    test::FakeDriver driver_;
    Ref<Connection> connection_;
};

TEST_F(FetchingTest, FetchesTheRestWhenItIsNeeded) {
    const auto rows = openNumbers(4, 0);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    EXPECT_FALSE(rows->Eof());
    std::string all;
    for (; !rows->Eof(); rows->MoveNext()) {
        all += shown(fieldOf(rows, 0)) + "|";
    }
    EXPECT_EQ(all, "Long 1|Long 2|Long 3|Long 4|");
}

TEST_F(FetchingTest, CountsFindsAndGoesToTheLastAmongAllRecords) {
    EXPECT_EQ(openNumbers(4, 0)->RecordCount(), 4);
    const auto last = openNumbers(4, 0);
    last->MoveLast();
    EXPECT_EQ(shown(fieldOf(last, 0)), "Long 4");
    const auto found = openNumbers(4, 0);
    found->Find(u"N = 3");
    EXPECT_EQ(found->AbsolutePosition(), 3);
    const auto filtered = openNumbers(4, 0);
    filtered->setFilter(u"N > 2");
    EXPECT_EQ(filtered->RecordCount(), 2);
}

TEST_F(FetchingTest, FetchesNoMoreThanAsked) {
    EXPECT_EQ(openNumbers(9, 0, 3)->RecordCount(), 3);
    EXPECT_EQ(openNumbers(9, 99, 1)->RecordCount(), 1);
}

TEST_F(FetchingTest, AConnectionThatBreaksMeanwhileIsRaisedAndLeavesTheRecordsThereAre) {
    const auto rows = openNumbers(4, 1);
    EXPECT_EQ(raisedBy([&] { rows->MoveLast(); }), errors::kUnspecified);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateOpen);
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 4");
}

TEST_F(FetchingTest, FetchesAllBeforeItIsDisconnected) {
    const auto broken = openNumbers(4, 1);
    EXPECT_EQ(raisedBy([&] { broken->setActiveConnection(Variant(Ref<Object>())); }),
              errors::kUnspecified);
    broken->setActiveConnection(Variant(Ref<Object>()));
    connection_->Close();
    EXPECT_EQ(broken->RecordCount(), 4);
}

TEST_F(FetchingTest, AnOpeningThatFailsWorksTheNextTime) {
    driver_.database.refusedOpenings = 2;
    const auto connection = make<Connection>();
    EXPECT_EQ(raisedBy([&] { connection->Open(u"Provider=Fake"); }), errors::kUnspecified);
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(connection->Errors()->Item(0)->Description(), String(u"No answer."));
    EXPECT_EQ(raisedBy([&] { connection->Open(); }), errors::kUnspecified);
    connection->Open();
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateOpen);
}

TEST_F(FetchingTest, AnAnswerThatBreaksOffLeavesTheRecordsetClosed) {
    driver_.database.answers.push_back(
        {test::FakeDatabase::message(errors::kUnspecified, "Connection broken."),
         {test::oneNumber(1)},
         {},
         {}});
    const auto rows = make<Recordset>();
    EXPECT_EQ(raisedBy([&] { rows->Open(u"SELECT N", Variant(connection_)); }),
              errors::kUnspecified);
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
}

TEST_F(FetchingTest, TheRowThatAnUpdateDoesNotFindIsAConflict) {
    Result result = test::oneNumber(1);
    result.columns[0].baseTable = "T";
    result.columns[0].baseColumn = "N";
    driver_.database.answer({result});
    driver_.database.rowsTouched = {0};
    const auto rows = make<Recordset>();
    rows->Open(u"SELECT N FROM T", Variant(connection_), CursorTypeEnum::adOpenKeyset,
               LockTypeEnum::adLockOptimistic);
    EXPECT_EQ(raisedBy([&] { rows->Update(u"N", 5); }), errors::kConcurrency);
    rows->Update();
    EXPECT_EQ(driver_.database.changes.size(), 2U);
    driver_.database.refusedChanges.push_back(
        test::FakeDatabase::message(errors::kTimeout, "locked"));
    EXPECT_EQ(raisedBy([&] { rows->Update(u"N", 6); }), errors::kTimeout);
}

}  // namespace
}  // namespace kap::ado
