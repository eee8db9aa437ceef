// Calls that come back before their work is done.
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "ado/events_fixture.hpp"
#include "ado/row_cursor.hpp"
#include "support/database.hpp"
#include "support/fake_driver.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

constexpr const char16_t* kWithoutEnd =
    u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c) "
    u"SELECT COUNT(*) FROM c OPTION (MAXRECURSION 0)";
constexpr std::int32_t kExecuteLater = 16;
constexpr std::int32_t kFetchLater = 32;
constexpr std::int32_t kFetchWithoutWaiting = 64;
constexpr std::int32_t kNoRecords = 128;

std::int32_t stateOf(const auto& object) {
    return static_cast<std::int32_t>(object.State());
}

// Until it is neither connecting, executing nor fetching.
std::int32_t settled(const auto& object) {
    while (stateOf(object) > 1) {
        std::this_thread::yield();
    }
    return stateOf(object);
}

class BackgroundTest : public ::testing::Test {
protected:
    BackgroundTest() : connection_(test::open(folder_.database())) {
        connection_->Execute(
            u"CREATE TABLE T (N int PRIMARY KEY, Testo varchar(40));"
            u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 5000) "
            u"INSERT INTO T SELECT n, 'riga ' + CAST(n AS varchar(10)) FROM c "
            u"OPTION (MAXRECURSION 0)");
    }

    Ref<Recordset> started(const char16_t* script, std::int32_t options) const {
        return connection_->Execute(script, Variant::missing(), options);
    }
    [[nodiscard]] Ref<Recordset> opened(std::int32_t options) const {
        auto rows = make<Recordset>();
        rows->setCursorLocation(CursorLocationEnum::adUseClient);
        rows->Open(u"SELECT N, Testo FROM T ORDER BY N", Variant(connection_),
                   CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockReadOnly, options);
        return rows;
    }

    test::TemporaryFolder folder_;
    Ref<Connection> connection_;
};

TEST_F(BackgroundTest, ExecuteComesBackWithARecordsetThatIsBeingExecuted) {
    connection_->setCommandTimeout(0);
    Variant written;
    const auto rows = connection_->Execute(kWithoutEnd, written, kExecuteLater);
    EXPECT_EQ(shown(written), "Long -1");
    EXPECT_EQ(stateOf(*rows), 4);
    EXPECT_EQ(stateOf(*connection_), 5);
    EXPECT_EQ(raisedBy([&] { return rows->Eof(); }), errors::kStillExecuting);
    EXPECT_EQ(raisedBy([&] { rows->Open(u"SELECT 1"); }), errors::kStillExecuting);
    EXPECT_EQ(raisedBy([&] { connection_->Execute(u"SELECT 1"); }), errors::kStillExecuting);
    EXPECT_EQ(raisedBy([&] { connection_->BeginTrans(); }), errors::kStillExecuting);
    connection_->Cancel();
    EXPECT_EQ(settled(*rows), 0);
    EXPECT_EQ(stateOf(*connection_), 1);
    ASSERT_EQ(connection_->Errors()->Count(), 1);
    EXPECT_EQ(connection_->Errors()->Item(0)->Number(), errors::kOperationCancelled);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT 1")), "Long 1");
}

TEST_F(BackgroundTest, WhatHasBeenExecutedIsThereOnceItIsAskedFor) {
    const auto rows = started(u"SELECT COUNT(*) FROM T", kExecuteLater);
    EXPECT_EQ(settled(*rows), 1);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5000");
    const auto failed = started(u"SELECT * FROM Nessuna", kExecuteLater);
    EXPECT_EQ(settled(*failed), 0);
    ASSERT_EQ(connection_->Errors()->Count(), 1);
    EXPECT_EQ(connection_->Errors()->Item(0)->NativeError(), 208);
}

TEST_F(BackgroundTest, AWriteGoesOnWhenItsRecordsetIsDropped) {
    started(u"DELETE FROM T WHERE N > 10", kExecuteLater | kNoRecords);
    settled(*connection_);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T")), "Long 10");
}

TEST_F(BackgroundTest, ARecordsetIsOpenedAndKeepsWhatWasChosenBefore) {
    auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->setFilter(u"N > 4998");
    rows->setSort(u"N DESC");
    rows->Open(u"T", Variant(connection_), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockOptimistic, 2 | kExecuteLater);
    EXPECT_EQ(settled(*rows), 1);
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5000");
    rows->Update(u"Testo", u"ultima");
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT Testo FROM T WHERE N = 5000")),
              "String ultima");
    rows->Requery(kExecuteLater);
    EXPECT_EQ(stateOf(*rows), 1) << "that waits";
}

TEST_F(BackgroundTest, ACommandHasItsParametersBackWhenItHasEnded) {
    connection_->Execute(
        u"CREATE PROCEDURE Conta @sotto int, @quante int OUTPUT AS "
        u"SELECT @quante = COUNT(*) FROM T WHERE N < @sotto");
    auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandType(CommandTypeEnum::adCmdStoredProc);
    command->setCommandText(u"Conta");
    command->Parameters()->Append(command->CreateParameter(
        u"@sotto", DataTypeEnum::adInteger, ParameterDirectionEnum::adParamInput, 0, 101));
    command->Parameters()->Append(command->CreateParameter(u"@quante", DataTypeEnum::adInteger,
                                                           ParameterDirectionEnum::adParamOutput));
    command->Execute(Variant::missing(), Variant::missing(), kExecuteLater);
    EXPECT_EQ(settled(*command), 0);
    EXPECT_EQ(shown(command->Parameters()->Item(1)->Value()), "Long 100");
}

TEST_F(BackgroundTest, AConnectionIsOpened) {
    auto other = make<Connection>();
    other->Open(String(folder_.database()), {}, {}, kExecuteLater);
    EXPECT_EQ(settled(*other), 1);
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT COUNT(*) FROM T")), "Long 5000");
    auto none = make<Connection>();
    none->Open(u"Provider=KapLocal;Data Source=/nessuna/cartella/a.db", {}, {}, kExecuteLater);
    EXPECT_EQ(settled(*none), 0);
    EXPECT_EQ(none->Errors()->Count(), 1);
    EXPECT_EQ(raisedBy([&] { none->Execute(u"SELECT 1"); }), errors::kObjectClosed);
}

TEST_F(BackgroundTest, ClosingOrDroppingEndsWhatRuns) {
    connection_->setCommandTimeout(0);
    const auto rows = started(kWithoutEnd, kExecuteLater);
    connection_->Close();
    EXPECT_EQ(stateOf(*rows), 0);
    EXPECT_EQ(stateOf(*connection_), 0);
    auto other = test::open(folder_.database());
    other->setCommandTimeout(0);
    auto dropped = make<Recordset>();
    dropped->Open(kWithoutEnd, Variant(other), CursorTypeEnum::adOpenForwardOnly,
                  LockTypeEnum::adLockReadOnly, kExecuteLater);
    dropped = {};
    other = {};
}

TEST_F(BackgroundTest, RowsComeWhileTheClientDoesSomethingElse) {
    const auto rows = opened(kFetchLater);
    EXPECT_EQ(shown(fieldOf(rows, u"Testo")), "String riga 1");
    EXPECT_EQ(settled(*rows), 1);
    EXPECT_EQ(rows->RecordCount(), 5000);
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, u"Testo")), "String riga 5000");
}

TEST_F(BackgroundTest, AMovementWaitsForItsRow) {
    const auto rows = opened(kExecuteLater | kFetchLater);
    while (stateOf(*rows) == 4) {
        std::this_thread::yield();
    }
    std::int64_t sum = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
        sum += fieldOf(rows, 0).as<std::int32_t>();
    }
    EXPECT_EQ(sum, 5000 * 5001 / 2);
    EXPECT_EQ(stateOf(*rows), 1);
}

TEST_F(BackgroundTest, AnythingElseOnTheConnectionWaitsForTheRows) {
    const auto rows = opened(kFetchLater);
    connection_->Execute(u"DELETE FROM T");
    EXPECT_EQ(settled(*rows), 1);
    EXPECT_EQ(rows->RecordCount(), 5000);
}

TEST_F(BackgroundTest, AnEndlessQueryMayBeLeftAlone) {
    connection_->setCommandTimeout(0);
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(
        u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c) SELECT n FROM c "
        u"OPTION (MAXRECURSION 0)",
        Variant(connection_), CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockReadOnly,
        kFetchWithoutWaiting);
    EXPECT_EQ(stateOf(*rows), 9);
    rows->Cancel();
    while (stateOf(*rows) > 1) {
        std::this_thread::yield();
    }
    EXPECT_GT(rows->RecordCount(), 0);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT 1")), "Long 1");
}

// Gives one row each time that it is told to.
class RowsByTheWay final : public RowSource {
public:
    void fetch(std::vector<ColumnStore>& rows) override {
        while (fetchSome(rows)) {
        }
    }
    bool fetchSome(std::vector<ColumnStore>& rows) override {
        while (allowed == given_) {
            std::this_thread::yield();
        }
        rows.front().appendInteger(++given_ + 1);
        return given_ < 3;
    }
    std::atomic<int> allowed{0};

private:
    int given_ = 0;
};

TEST(BackgroundRows, AMovementThatDoesNotWaitGoesToTheEndOfWhatIsThere) {
    const test::FakeDriver driver;
    Result result = test::oneNumber(1);
    const auto source = std::make_shared<RowsByTheWay>();
    result.rest = source;
    driver.database.answer({result});
    const auto connection = test::open("Provider=Fake");
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"x", Variant(connection), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockReadOnly, kFetchWithoutWaiting);
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(stateOf(*rows), 9);
    source->allowed = 1;
    while (rows->RecordCount() == 1) {
        std::this_thread::yield();
    }
    EXPECT_EQ(rows->RecordCount(), 2);
    rows->MoveFirst();
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
    source->allowed = 3;
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 4");
    EXPECT_EQ(stateOf(*rows), 1);
}

class BackgroundEvents : public events_test::EventsTest {
protected:
    using Lines = events_test::Lines;

    Ref<Recordset> started(const char16_t* script, std::int32_t options) const {
        return connection_->Execute(script, Variant::missing(), options);
    }
};

TEST_F(BackgroundEvents, AreRaisedWhenTheClientAsks) {
    watchConnection();
    auto rows = started(u"SELECT 1", kExecuteLater);
    EXPECT_EQ(told_.taken(), Lines{"will run SELECT 1"});
    settled(*rows);
    EXPECT_EQ(told_.taken(), Lines{"run -1 with a recordset"});
    rows = started(u"SELECT * FROM Nessuna", kExecuteLater);
    settled(*rows);
    EXPECT_EQ(told_.taken(), (Lines{"will run SELECT * FROM Nessuna",
                                    "run -1 with a recordset failed -2147217865"}));
    started(u"SELECT 2", kExecuteLater);
    settled(*connection_);
    EXPECT_EQ(told_.taken(), (Lines{"will run SELECT 2", "run -1 with a recordset"}))
        << "though the caller has dropped it";
    told_.answered = "will run";
    told_.answer = EventStatusEnum::adStatusCancel;
    EXPECT_EQ(failureOf([&] { started(u"SELECT 3", kExecuteLater); }), errors::kOperationCancelled);
    EXPECT_EQ(stateOf(*connection_), 1);
}

TEST_F(BackgroundEvents, TellOfRecordsetsThatAreOpenedAndOfTheirRows) {
    auto rows = make<Recordset>();
    rows->connect(make<events_test::RecordsetSink>(told_));
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT * FROM Clienti", Variant(connection_), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockReadOnly, kExecuteLater | kFetchLater);
    EXPECT_EQ(told_.taken(), Lines{});
    settled(*rows);
    EXPECT_EQ(told_.taken(), (Lines{"all fetched", "moved Requery to 1", "changed all Requery"}))
        << "for this sink asks for State while it is told of the first record";
}

TEST_F(BackgroundEvents, TellOfAConnectionThatIsOpened) {
    auto other = make<Connection>();
    other->connect(make<events_test::ConnectionSink>(told_));
    other->Open(u"Provider=KapLocal;Data Source=:memory:later", {}, {}, kExecuteLater);
    settled(*other);
    EXPECT_EQ(told_.taken(),
              (Lines{"will open Provider=KapLocal;Data Source=:memory:later as ", "opened"}));
}

}  // namespace
}  // namespace kap::ado
