// Queries of the embedded database whose rows come as they are needed.
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "ado/row_cursor.hpp"
#include "support/database.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

constexpr std::int32_t kRows = 5000;

class RowStreamTest : public ::testing::Test {
protected:
    RowStreamTest() : connection_(test::open(folder_.database())) {
        connection_->Execute(
            u"CREATE TABLE T (N int PRIMARY KEY, Testo varchar(40));"
            u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 5000) "
            u"INSERT INTO T SELECT n, 'riga ' + CAST(n AS varchar(10)) FROM c "
            u"OPTION (MAXRECURSION 0)");
    }

    [[nodiscard]] Ref<Recordset> all() const {
        return connection_->Execute(u"SELECT N, Testo FROM T ORDER BY N");
    }
    static std::int64_t sumOf(const Ref<Recordset>& rows) {
        std::int64_t sum = 0;
        for (; !rows->Eof(); rows->MoveNext()) {
            sum += fieldOf(rows, 0).as<std::int32_t>();
        }
        return sum;
    }
    static bool isComplete(const Ref<Recordset>& rows) { return rows->rows().table().complete(); }

    static constexpr std::int64_t kSum = std::int64_t{kRows} * (kRows + 1) / 2;
    test::TemporaryFolder folder_;
    Ref<Connection> connection_;
};

TEST_F(RowStreamTest, KeepsAWindowOfTheRows) {
    const auto rows = all();
    EXPECT_FALSE(isComplete(rows));
    std::size_t most = 0;
    std::int32_t expected = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
        ASSERT_EQ(shown(fieldOf(rows, 0)), "Long " + std::to_string(++expected));
        ASSERT_EQ(shown(fieldOf(rows, 1)), "String riga " + std::to_string(expected));
        most = std::max(most, rows->rows().table().size());
    }
    EXPECT_EQ(expected, kRows);
    EXPECT_LT(most, 2000U);
    EXPECT_FALSE(rows->Bof());
    EXPECT_EQ(rows->RecordCount(), -1);
    EXPECT_EQ(raisedBy([&] { rows->MoveNext(); }), errors::kNoCurrentRecord);
}

TEST_F(RowStreamTest, FieldsFollowTheWindow) {
    const auto rows = all();
    const auto field = rows->Fields()->Item(0);
    rows->Move(4321);
    EXPECT_EQ(shown(field->Value()), "Long 4322");
    rows->MoveFirst();
    EXPECT_EQ(shown(field->Value()), "Long 1");
    rows->replaceNulls(1);
    rows->MoveLast();
    EXPECT_EQ(shown(field->Value()), "Long 5000");
}

TEST_F(RowStreamTest, NullsStayReplacedInEveryWindow) {
    connection_->Execute(u"UPDATE T SET Testo = NULL WHERE N > 4000");
    const auto rows = all();
    rows->replaceNulls(1);
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, 1)), "String ");
}

TEST_F(RowStreamTest, GoesBackToTheFirstRowByRunningTheQueryAgain) {
    const auto rows = all();
    rows->Move(3000);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3001");
    EXPECT_EQ(raisedBy([&] { rows->MovePrevious(); }), errors::kCannotFetchBackward);
    rows->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    EXPECT_EQ(sumOf(rows), kSum);
    rows->MoveFirst();
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5000");
    rows->Requery();
    EXPECT_EQ(sumOf(rows), kSum);

    const auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandText(u"SELECT N FROM T WHERE N > ? ORDER BY N");
    const auto later = command->Execute(Variant::missing(), 1000);
    later->Move(2500);
    later->MoveFirst();
    EXPECT_EQ(shown(fieldOf(later, 0)), "Long 1001");
}

TEST_F(RowStreamTest, AQueryThatCannotBeRunAgainClosesItsRecordset) {
    const auto rows = all();
    rows->Move(3000);
    test::open(folder_.database())->Execute(u"DROP TABLE T");
    EXPECT_EQ(raisedBy([&] { rows->MoveFirst(); }), errors::kUnknownObject);
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
}

TEST_F(RowStreamTest, WhatWritesIsNotRunAgain) {
    const auto rows = connection_->Execute(
        u"SET NOCOUNT ON; INSERT INTO T VALUES (0, 'nuova'); SELECT N FROM T ORDER BY N");
    EXPECT_EQ(sumOf(rows), kSum);
    rows->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 0");
    EXPECT_EQ(sumOf(rows), kSum);
}

TEST_F(RowStreamTest, TheLastQueryOfAScriptThatOnlyReadsStreams) {
    const auto rows = connection_->Execute(
        u"DECLARE @da int; SET @da = 10; SELECT N FROM T WHERE N > @da ORDER BY N");
    EXPECT_FALSE(isComplete(rows));
    rows->Move(3000);
    rows->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 11");
    EXPECT_EQ(sumOf(rows), kSum - 55);
}

constexpr const char16_t* kTwoQueries = u"SELECT N FROM T ORDER BY N; SELECT @@ROWCOUNT AS Prima";

TEST_F(RowStreamTest, AScriptStandsStillBehindEachQuery) {
    const auto first = connection_->Execute(
        u"SELECT 1 AS A; SELECT 1/0 AS B; SELECT N FROM T ORDER BY N; SELECT 4 AS D");
    EXPECT_EQ(shown(fieldOf(first, 0)), "Long 1");
    EXPECT_EQ(raisedBy([&] { first->NextRecordset(); }), errors::kCommandText);
    EXPECT_EQ(shown(fieldOf(first, 0)), "Long 1") << "there is nothing in its place";
    const auto third = first->NextRecordset();
    EXPECT_EQ(first->State(), ObjectStateEnum::adStateClosed);
    EXPECT_FALSE(isComplete(third));
    EXPECT_EQ(sumOf(third), kSum);
    const auto fourth = third->NextRecordset();
    EXPECT_EQ(shown(fieldOf(fourth, u"D")), "Long 4");
    EXPECT_FALSE(fourth->NextRecordset());
    EXPECT_EQ(fourth->State(), ObjectStateEnum::adStateOpen);
}

TEST_F(RowStreamTest, EachAnswerOfAScriptIsHandedOverWhileItsRowsCome) {
    std::string told;
    std::size_t most = 0;
    const auto take = [&](Recordset& answer) {
        most = std::max(most, answer.rows().table().size());
        EXPECT_FALSE(answer.rows().table().complete());
        told += std::to_string(sumOf(Ref<Recordset>(&answer))) + " ";
    };
    const auto run = [&] {
        connection_->executeEach(u"SELECT N FROM T; SELECT 1/0 AS B; SELECT N FROM T WHERE N > 1",
                                 take, Connection::Reading::Once);
    };
    EXPECT_EQ(raisedBy(run), errors::kCommandText);
    EXPECT_LT(most, 2000U);
    EXPECT_EQ(told, std::to_string(kSum) + " " + std::to_string(kSum - 1) + " ");
    EXPECT_EQ(connection_->Errors()->Count(), 1);
}

TEST_F(RowStreamTest, RowsThatNobodyTookAreCountedAllTheSame) {
    const auto first = connection_->Execute(kTwoQueries);
    EXPECT_FALSE(isComplete(first));
    EXPECT_EQ(shown(fieldOf(first->NextRecordset(), 0)), "Long 5000");
}

TEST_F(RowStreamTest, TheRestOfAScriptMakesWayForAnythingElse) {
    const auto first = connection_->Execute(kTwoQueries);
    connection_->Execute(u"DELETE FROM T WHERE N > 10");
    EXPECT_EQ(sumOf(first), kSum);
    EXPECT_EQ(shown(fieldOf(first->NextRecordset(), 0)), "Long 5000");
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T")), "Long 10");
}

TEST_F(RowStreamTest, TheRestOfAScriptEndsWithItsRecordset) {
    auto first = connection_->Execute(kTwoQueries);
    first->Close();
    EXPECT_EQ(raisedBy([&] { first->NextRecordset(); }), errors::kObjectClosed);
    first = connection_->Execute(kTwoQueries);
    connection_->Close();
    EXPECT_EQ(raisedBy([&] { first->NextRecordset(); }), errors::kObjectClosed);
}

TEST_F(RowStreamTest, LoopsAndConditionsGoOn) {
    auto rows = connection_->Execute(
        u"DECLARE @n int SET @n = 0 WHILE 1 = 1 BEGIN SET @n = @n + 1 SELECT @n AS N END");
    for (int n = 1; n < 200; ++n) {
        EXPECT_EQ(fieldOf(rows, 0).as<std::int32_t>(), n);
        rows = rows->NextRecordset();
    }
}

TEST_F(RowStreamTest, ALaterQueryIsRunAgainForItsFirstRow) {
    const auto rows = connection_->Execute(u"SELECT 1 AS A; SELECT N FROM T ORDER BY N; SELECT 3")
                          ->NextRecordset();
    EXPECT_EQ(sumOf(rows), kSum);
    rows->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    EXPECT_EQ(shown(fieldOf(rows->NextRecordset(), 0)), "Long 3");
}

TEST_F(RowStreamTest, WhatWritesOrSetsOptionsIsRunToItsEnd) {
    for (const char16_t* script :
         {u"SELECT 1 AS A; DELETE FROM T; SELECT 2", u"SELECT 1 AS A; SET NOCOUNT ON; SELECT 2"}) {
        const auto rows = connection_->Execute(script);
        EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
        auto next = rows->NextRecordset();
        while (next && next->State() == ObjectStateEnum::adStateClosed) {
            next = next->NextRecordset();
        }
        ASSERT_TRUE(next);
        EXPECT_EQ(shown(fieldOf(next, 0)), "Long 2");
    }
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T")), "Long 0");
    connection_->Execute(u"SELECT 1; SELECT N FROM T", Variant::missing(), 128);
    EXPECT_EQ(
        raisedBy([&] { connection_->Execute(u"SELECT 1; SELECT 1/0", Variant::missing(), 128); }),
        errors::kCommandText)
        << "nobody is going to ask for the second";
}

TEST_F(RowStreamTest, WhatEndsTheBatchInTheRowsEndsTheScript) {
    const auto rows = connection_->Execute(
        u"SELECT CAST(CASE WHEN N < 3000 THEN '1' ELSE 'x' END AS int) FROM T ORDER BY N; "
        u"SELECT 2");
    EXPECT_NE(raisedBy([&] { sumOf(rows); }), 0);
    EXPECT_FALSE(rows->NextRecordset());
}

TEST_F(RowStreamTest, FindsFiltersAndTakesManyRows) {
    const auto rows = all();
    rows->Find(u"N = 4321");
    EXPECT_EQ(shown(fieldOf(rows, 1)), "String riga 4321");
    rows->Find(u"N = 1");
    EXPECT_TRUE(rows->Eof());
    rows->setFilter(u"N > 4990");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 4991");
    EXPECT_EQ(sumOf(rows), 49955);

    const auto some = all();
    some->Move(90);
    EXPECT_EQ(some->GetRows(1500).as<Array>().size(), 3000U);
    EXPECT_EQ(shown(fieldOf(some, 0)), "Long 1591");
    EXPECT_EQ(some->GetRows().as<Array>().size(), 2U * (kRows - 1590));
    EXPECT_TRUE(some->Eof());
    EXPECT_EQ(raisedBy([&] { static_cast<void>(some->GetRows()); }), errors::kNoCurrentRecord);

    const auto text = all();
    text->Move(4990);
    EXPECT_EQ(text->GetString(StringFormatEnum::adClipString, 2, u",", u";"),
              String(u"4991,riga 4991;4992,riga 4992;"));
    EXPECT_EQ(text->GetString(StringFormatEnum::adClipString, -1, u",", u";").view().size(), 120U);
}

TEST_F(RowStreamTest, SavesAllOfItsRecords) {
    const auto rows = all();
    rows->Move(3000);
    const auto stream = make<Stream>();
    stream->Open();
    rows->Save(Variant(stream), PersistFormatEnum::adPersistXML);
    const auto saved = make<Recordset>();
    saved->Open(Variant(stream));
    EXPECT_EQ(saved->RecordCount(), kRows);
}

TEST_F(RowStreamTest, HasTheLimitsThatWereAskedFor) {
    const auto rows = make<Recordset>();
    rows->setMaxRecords(1234);
    rows->Open(u"SELECT N FROM T ORDER BY N", Variant(connection_));
    EXPECT_EQ(sumOf(rows), 1234 * 1235 / 2);
    connection_->Execute(u"SET ROWCOUNT 150");
    EXPECT_EQ(sumOf(connection_->Execute(u"SELECT N FROM T ORDER BY N")), 150 * 151 / 2);
    connection_->Execute(u"SET ROWCOUNT 0");
}

TEST_F(RowStreamTest, AnythingElseOnTheConnectionMayBeDoneMeanwhile) {
    const auto rows = all();
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT @@ROWCOUNT")), "Long 5000");
    connection_->BeginTrans();
    connection_->Execute(u"UPDATE T SET Testo = 'x'; DELETE FROM T WHERE N > 10");
    connection_->RollbackTrans();
    connection_->Execute(u"DROP TABLE T");
    EXPECT_EQ(sumOf(rows), kSum);
    EXPECT_EQ(raisedBy([&] { rows->Requery(); }), errors::kUnknownObject);
}

TEST_F(RowStreamTest, SeveralRecordsetsOfOneConnectionAreReadInTurns) {
    const auto first = all();
    const auto second = connection_->Execute(u"SELECT N FROM T ORDER BY N DESC");
    for (std::int32_t n = 1; !first->Eof(); first->MoveNext(), second->MoveNext(), ++n) {
        ASSERT_EQ(fieldOf(first, 0).as<std::int32_t>(), n);
        ASSERT_EQ(fieldOf(second, 0).as<std::int32_t>(), kRows + 1 - n);
    }
    EXPECT_TRUE(second->Eof());
}

TEST_F(RowStreamTest, ALoopMayWriteWhatItReads) {
    const auto rows = all();
    for (; !rows->Eof(); rows->MoveNext()) {
        const auto n = fieldOf(rows, 0).as<std::int32_t>();
        if (n % 1000 == 0) {
            connection_->Execute(u"UPDATE T SET N = N + 100000 WHERE N = " +
                                 String(std::to_string(n)).units());
        }
    }
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T WHERE N > 100000")),
              "Long 5");
}

TEST_F(RowStreamTest, SeesTheOpenTransactionAndTemporaryTables) {
    connection_->BeginTrans();
    connection_->Execute(u"UPDATE T SET N = -N; SELECT * INTO #Copia FROM T");
    const auto rows = connection_->Execute(u"SELECT N FROM #Copia");
    EXPECT_FALSE(isComplete(rows));
    rows->Move(200);
    connection_->CommitTrans();
    rows->MoveFirst();
    EXPECT_EQ(sumOf(rows), -kSum);
    connection_->BeginTrans();
    connection_->Execute(u"DELETE FROM T WHERE N < -10");
    const auto left = connection_->Execute(
        u"SELECT N, Testo FROM T CROSS JOIN (SELECT TOP 100 N "
        u"AS M FROM #Copia) AS C");
    EXPECT_FALSE(isComplete(left));
    connection_->RollbackTrans();
    EXPECT_EQ(sumOf(left), -5500);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T")), "Long 5000");
    connection_->Execute(u"DROP TABLE #Copia");
}

TEST_F(RowStreamTest, TableVariablesEndWithTheirScript) {
    const auto rows = connection_->Execute(
        u"DECLARE @t TABLE (N int); INSERT INTO @t SELECT N FROM T; SELECT N FROM @t");
    EXPECT_TRUE(isComplete(rows));
    EXPECT_EQ(sumOf(rows), kSum);
}

TEST_F(RowStreamTest, SeesOneStateOfTheDatabaseAndKeepsNobodyFromWriting) {
    const auto rows = all();
    const auto other = test::open(folder_.database());
    other->Execute(u"UPDATE T SET N = N + 100000; INSERT INTO T VALUES (1, 'nuova')");
    EXPECT_EQ(sumOf(rows), kSum);
    EXPECT_EQ(shown(test::valueOf(other, u"SELECT COUNT(*) FROM T")), "Long 5001");
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT MIN(N) FROM T")), "Long 1");
}

TEST_F(RowStreamTest, RaisesWhatFailsBehindTheFirstRows) {
    connection_->Execute(u"INSERT INTO T VALUES (6000, 'ultima')");
    const auto rows = connection_->Execute(
        u"SELECT N, 1 / (CASE WHEN N = 6000 THEN 0 ELSE 1 END) FROM T ORDER BY N");
    EXPECT_NE(raisedBy([&] { rows->MoveLast(); }), 0);
    EXPECT_EQ(connection_->Errors()->Item(0)->NativeError(), 8134);
    EXPECT_NE(raisedBy([&] { rows->MoveLast(); }), 0);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T")), "Long 5001");
}

TEST_F(RowStreamTest, AFailureThatUndoesTheTransactionIsToldBeforeAnythingElseIsDone) {
    connection_->Execute(u"SET XACT_ABORT ON; INSERT INTO T VALUES (6000, 'ultima')");
    connection_->BeginTrans();
    connection_->Execute(u"INSERT INTO T VALUES (7000, 'non resta')");
    const auto rows = connection_->Execute(
        u"SELECT N, 1 / (CASE WHEN N = 6000 THEN 0 ELSE 1 END) FROM T ORDER BY N");
    EXPECT_FALSE(isComplete(rows));
    EXPECT_NE(raisedBy([&] { connection_->Execute(u"INSERT INTO T VALUES (8000, 'nemmeno')"); }),
              0);
    EXPECT_EQ(connection_->Errors()->Item(0)->NativeError(), 8134);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT MAX(N) FROM T")), "Long 6000");
}

TEST_F(RowStreamTest, EndsWithItsRecordsetOrItsConnection) {
    auto rows = all();
    rows->Move(200);
    const auto field = rows->Fields()->Item(0);
    rows->Close();
    rows = all();
    rows->Move(200);
    connection_->Close();
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
    connection_->Open();
    rows = all();
    rows->setActiveConnection(Variant(Ref<Object>()));
    connection_->Close();
    EXPECT_EQ(sumOf(rows), kSum);
}

TEST_F(RowStreamTest, CallsFunctionsAsItsRequestDid) {
    connection_->Execute(
        u"CREATE FUNCTION Doppio (@n int) RETURNS int AS BEGIN RETURN (SELECT 2 * @n) END");
    const auto rows = connection_->Execute(u"SELECT dbo.Doppio(N) FROM T");
    EXPECT_FALSE(isComplete(rows));
    EXPECT_EQ(sumOf(rows), 2 * kSum);
}

TEST_F(RowStreamTest, HasATimeLimitForEachWait) {
    connection_->setCommandTimeout(1);
    const auto rows = connection_->Execute(
        u"SELECT N, (SELECT COUNT(*) FROM T AS A CROSS JOIN T AS B CROSS JOIN T AS C "
        u"WHERE A.N + B.N + C.N = -1 AND T.N > 4000) FROM T ORDER BY N");
    EXPECT_EQ(raisedBy([&] { rows->MoveLast(); }), errors::kTimeout);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM T")), "Long 5000");
}

TEST_F(RowStreamTest, ARecordsetOfAnyOtherKindHasItsRowsAtOnce) {
    const auto rows = make<Recordset>();
    rows->Open(u"SELECT N FROM T", Variant(connection_), CursorTypeEnum::adOpenStatic,
               LockTypeEnum::adLockReadOnly);
    EXPECT_TRUE(isComplete(rows));
    EXPECT_EQ(rows->RecordCount(), kRows);
}

TEST_F(RowStreamTest, ADatabaseInMemoryGivesItsRowsAtOnce) {
    const auto memory = test::open("Provider=KapLocal;Data Source=:memory:stream");
    memory->Execute(u"CREATE TABLE T (N int)");
    const auto values = memory->Execute(
        u"WITH c AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 500) "
        u"SELECT n FROM c OPTION (MAXRECURSION 0)");
    EXPECT_TRUE(isComplete(values));
    test::open("Provider=KapLocal;Data Source=:memory:stream")->Execute(u"INSERT T VALUES (1)");
}

TEST_F(RowStreamTest, AReaderThatStandsStillLetsTheJournalBeUsedAnew) {
    const auto rows = all();
    const auto other = test::open(folder_.database());
    other->Execute(u"CREATE TABLE Grande (Testo varchar(max))");
    constexpr std::uintmax_t kLarge = std::uintmax_t{64} << 20U;
    const std::filesystem::path journal = folder_.file("azienda.db-wal");
    for (int i = 0; i < 10 && std::filesystem::file_size(journal) <= kLarge; ++i) {
        other->Execute(
            u"INSERT INTO Grande VALUES (REPLICATE(CAST('x' AS varchar(max)), 8000000))");
    }
    // It is looked at from time to time.
    for (int i = 0; i < 1500 && std::filesystem::file_size(journal) > kLarge; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        other->Execute(u"INSERT INTO Grande VALUES ('y')");
    }
    EXPECT_LE(std::filesystem::file_size(journal), kLarge);
    EXPECT_FALSE(isComplete(rows));
    EXPECT_EQ(sumOf(rows), kSum);
}

}  // namespace
}  // namespace kap::ado
