#include <kaputil/db/recordsets.hpp>

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/fake_driver.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap::db {
namespace {

using test::fieldOf;
using test::openMemory;
using test::raisedBy;
using test::shown;
using test::valueOf;

class OpenRecordsetTest : public ::testing::Test {
protected:
    OpenRecordsetTest() : connection_(openMemory()) {}

    LocaleScope locale_{"it-IT"};
    Ref<ado::Connection> connection_;
};

TEST_F(OpenRecordsetTest,
       OpensAStaticOptimisticClientSideDisconnectedRecordsetOfCommandTextByDefault) {
    const auto rows = OpenRecordset(u"SELECT 1 AS A UNION ALL SELECT 2", connection_);
    EXPECT_EQ(rows->CursorType(), ado::CursorTypeEnum::adOpenStatic);
    EXPECT_EQ(rows->LockType(), ado::LockTypeEnum::adLockOptimistic);
    EXPECT_EQ(rows->CursorLocation(), ado::CursorLocationEnum::adUseClient);
    EXPECT_FALSE(rows->ActiveConnection().as<Ref<Object>>());
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(connection_->State(), ado::ObjectStateEnum::adStateOpen);
}

TEST_F(OpenRecordsetTest, WritesTheChosenDefaultsIntoTheCallersVariables) {
    Variant connection(connection_);
    std::int16_t cursorType = -1;
    std::int16_t lockType = -1;
    std::int16_t options = -1;
    std::int16_t location = -1;
    bool deleteNull = true;
    bool closeConnection = true;
    static_cast<void>(OpenRecordset(u"SELECT 1", connection, cursorType, lockType, options,
                                    deleteNull, closeConnection, location));
    EXPECT_EQ(cursorType, 3);
    EXPECT_EQ(lockType, 3);
    EXPECT_EQ(options, 1);
    EXPECT_EQ(location, 3);
}

TEST_F(OpenRecordsetTest, LeavesOptionsThatWereGivenAsTheyAre) {
    std::int16_t cursorType = 1;
    std::int16_t location = 2;
    const auto rows = OpenRecordset(u"SELECT 1", connection_, cursorType, std::int16_t{1},
                                    std::int16_t{1}, true, false, location);
    EXPECT_EQ(cursorType, 1);
    EXPECT_EQ(location, 2);
    EXPECT_EQ(rows->CursorType(), ado::CursorTypeEnum::adOpenKeyset);
    EXPECT_EQ(rows->LockType(), ado::LockTypeEnum::adLockReadOnly);
    EXPECT_TRUE(rows->ActiveConnection().as<Ref<Object>>());
}

TEST_F(OpenRecordsetTest, ReplacesEveryNullOfATextNumericOrDateField) {
    kap::test::prepare(
        connection_,
        u"CREATE TABLE Tutti (a smallint, b real, c float, d money, e decimal(9,2), "
        u"f numeric(9,2), g tinyint, h char(3), i varchar(3), j text, k nvarchar(3), l date);"
        u"INSERT INTO Tutti (a) VALUES (NULL)");
    const auto rows = OpenRecordset(u"SELECT * FROM Tutti", connection_);
    std::string values;
    for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
        values += shown(fieldOf(rows, i)) + "|";
    }
    // The one has types for money and small numbers, the other takes what comes nearest.
    const bool own = kap::test::readsDialect(connection_);
    EXPECT_EQ(values, "Integer 0|Single 0|Double 0|" + test::shownMoney(connection_, "0") +
                          "|Decimal 0|Decimal 0|" + (own ? "Byte" : "Integer") +
                          " 0|String |String |String |String |Date 00:00:00|");
}

TEST_F(OpenRecordsetTest, LeavesTheNullsOfOtherTypes) {
    KAP_NEEDS_DIALECT(connection_, "wide texts are no types of their own there");
    kap::test::prepare(
        connection_,
        u"CREATE TABLE Altri (a int, b bit, c bigint, d nchar(2), e ntext, f varbinary(4), "
        u"g image, h datetime, i uniqueidentifier, j binary(4));"
        u"INSERT INTO Altri (a) VALUES (NULL)");
    const auto rows = OpenRecordset(u"SELECT * FROM Altri", connection_);
    for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
        EXPECT_TRUE(fieldOf(rows, i).isNull()) << i;
    }
}

TEST_F(OpenRecordsetTest, KeepsNullsWhenTheyAreWanted) {
    const auto rows =
        OpenRecordset(u"SELECT CAST(NULL AS varchar(3)) AS A", connection_, -1, -1, -1, false);
    EXPECT_TRUE(fieldOf(rows, 0).isNull());
}

TEST_F(OpenRecordsetTest, KeepsValuesThatAreNotNullInAColumnWithNulls) {
    const auto rows =
        OpenRecordset(u"SELECT 'a' AS A UNION ALL SELECT NULL UNION ALL SELECT 'c'", connection_);
    std::u16string values;
    for (; !rows->Eof(); rows->MoveNext()) {
        values += fieldOf(rows, 0).as<String>().units() + u".";
    }
    EXPECT_EQ(values, u"a..c.");
}

TEST_F(OpenRecordsetTest, DoesNotWriteTheDatabaseWhenItReplacesNullsOfLiveRows) {
    kap::test::prepare(connection_,
                       u"CREATE TABLE T (Id int PRIMARY KEY, Testo varchar(5), AggID timestamp);"
                       u"INSERT INTO T (Id) VALUES (1), (2)");
    constexpr const char16_t* kVersion = u"SELECT AggID FROM T WHERE Id = 2";
    const auto before = valueOf(connection_, kVersion).as<Array>().bytes();
    static_cast<void>(OpenRecordset(u"SELECT * FROM T", connection_, std::int16_t{1},
                                    std::int16_t{3}, -1, true, false, std::int16_t{2}));
    EXPECT_EQ(valueOf(connection_, kVersion).as<Array>().bytes(), before);
    EXPECT_EQ(
        shown(valueOf(connection_, u"SELECT CAST(COUNT(*) AS int) FROM T WHERE Testo IS NULL")),
        "Long 2");
}

TEST_F(OpenRecordsetTest, AcceptsAConnectionString) {
    const test::TemporaryFolder folder;
    Variant connection(folder.database());
    const auto rows = OpenRecordset(u"SELECT 5 AS A", connection);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5");
    EXPECT_TRUE(connection.isString());
}

// What happens when opening fails, on a database that does as it is told.
class FailingOpenTest : public ::testing::Test {
protected:
    FailingOpenTest() : connection_(test::open("Provider=Fake")) {}

    test::FakeDriver driver_;
    Ref<ado::Connection> connection_;
};

TEST_F(FailingOpenTest, AQueryOverATableThatDoesNotExistRaisesOnTheFirstAttempt) {
    driver_.database.fail(ado::errors::kUnknownObject, "Invalid object name 'X'.");
    try {
        static_cast<void>(OpenRecordset(u"SELECT * FROM X", connection_));
        FAIL() << "no error was raised";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), -2147217865);
        EXPECT_EQ(error.description(), String(u"Invalid object name 'X'."));
        EXPECT_EQ(error.source(), String());
    }
    EXPECT_EQ(driver_.database.scripts.size(), 1U);
}

TEST_F(FailingOpenTest, AnErrorInTheCommandTextRaisesOnTheFirstAttempt) {
    driver_.database.fail(ado::errors::kCommandText, "Incorrect syntax near 'x'.");
    EXPECT_EQ(raisedBy([&] { return OpenRecordset(u"x", connection_); }), -2147217900);
    EXPECT_EQ(driver_.database.scripts.size(), 1U);
}

TEST_F(FailingOpenTest, AnyOtherFailureIsRetriedAtOnceUntilItHeals) {
    driver_.database.fail(ado::errors::kTimeout, "locked", 10);
    driver_.database.answer({});
    driver_.database.answers.back().results.push_back(test::oneNumber(7));
    const auto rows = OpenRecordset(u"SELECT N", connection_);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 7");
    EXPECT_EQ(driver_.database.scripts.size(), 11U);
}

TEST_F(FailingOpenTest, AfterElevenFailuresTheClosedRecordsetComesBack) {
    driver_.database.fail(ado::errors::kTimeout, "locked");
    const auto rows = OpenRecordset(u"SELECT N", connection_, -1, -1, -1, false, false);
    EXPECT_EQ(rows->State(), ado::ObjectStateEnum::adStateClosed);
    EXPECT_EQ(driver_.database.scripts.size(), 11U);
}

TEST_F(FailingOpenTest, AfterElevenFailuresTheReplacementOfNullsMeetsAClosedRecordset) {
    driver_.database.fail(ado::errors::kTimeout, "locked");
    EXPECT_EQ(raisedBy([&] { return OpenRecordset(u"SELECT N", connection_); }),
              ado::errors::kObjectClosed);
    EXPECT_EQ(driver_.database.scripts.size(), 11U);
}

TEST_F(FailingOpenTest, AFailureThatHealsAndThenTurnsPermanentIsRaised) {
    driver_.database.fail(ado::errors::kTimeout, "locked", 3);
    driver_.database.fail(ado::errors::kUnknownObject, "Invalid object name 'X'.");
    EXPECT_EQ(raisedBy([&] { return OpenRecordset(u"SELECT N", connection_); }),
              ado::errors::kUnknownObject);
    EXPECT_EQ(driver_.database.scripts.size(), 4U);
}

// These wait for about two seconds, once each.
TEST_F(FailingOpenTest, AFetchThatFailsIsOpenedAgain) {
    driver_.database.answer({test::numbersInPieces(3, 1)});
    driver_.database.answer({test::numbersInPieces(3, 0)});
    const auto rows = OpenRecordset(u"SELECT N", connection_);
    EXPECT_EQ(driver_.database.scripts.size(), 2U);
    EXPECT_EQ(rows->RecordCount(), 3);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
}

TEST_F(FailingOpenTest, AFailedFetchCountsLikeAFailedOpening) {
    driver_.database.fail(ado::errors::kTimeout, "locked", 10);
    driver_.database.answer({test::numbersInPieces(3, 1)});
    driver_.database.answer({test::numbersInPieces(3, 0)});
    const auto rows = OpenRecordset(u"SELECT N", connection_, -1, -1, -1, false, false);
    EXPECT_EQ(rows->State(), ado::ObjectStateEnum::adStateClosed);
    EXPECT_EQ(driver_.database.scripts.size(), 11U);
}

TEST_F(FailingOpenTest, AFetchThatWillNeverWorkIsNotRetried) {
    driver_.database.answer({test::numbersInPieces(3, 1, ado::errors::kUnknownObject)});
    EXPECT_EQ(raisedBy([&] { return OpenRecordset(u"SELECT N", connection_); }), -2147217865);
    EXPECT_EQ(driver_.database.scripts.size(), 1U);
}

TEST_F(FailingOpenTest, AConnectionStringThatCannotBeOpenedIsRetriedToo) {
    driver_.database.answer({test::oneNumber(7)});
    const int before = driver_.database.opened;
    driver_.database.refusedOpenings = 3;
    Variant connection(u"Provider=Fake");
    const auto rows = OpenRecordset(u"SELECT N", connection);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 7");
    EXPECT_EQ(driver_.database.opened, before + 4);
    EXPECT_TRUE(connection.isString());
}

// A connection object stays lost; a string opens another one each time.
TEST_F(FailingOpenTest, ALostConnectionIsRaisedAtOnceUnlessAnotherIsOpened) {
    const ado::ServerMessage lost{0, ado::errors::kUnspecified, "08S01", "The connection is lost."};
    driver_.database.answers.push_back({lost, {}, {}, {}});
    driver_.database.answer({test::oneNumber(7)});
    EXPECT_EQ(raisedBy([&] { return OpenRecordset(u"SELECT N", connection_); }),
              ado::errors::kUnspecified);
    EXPECT_EQ(driver_.database.scripts.size(), 1U);
    driver_.database.answers.push_front({lost, {}, {}, {}});
    Variant text(u"Provider=Fake");
    EXPECT_EQ(shown(fieldOf(OpenRecordset(u"SELECT N", text), 0)), "Long 7");
}

TEST_F(FailingOpenTest, AnEmptyAnswerIsNotFetched) {
    ado::Result none = test::oneNumber(1);
    none.rows.front() = {};
    driver_.database.answer({none});
    const auto rows = OpenRecordset(u"SELECT N", connection_);
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(driver_.database.scripts.size(), 1U);
}

TEST_F(FailingOpenTest, AScriptWithoutRowsLeavesAClosedRecordsetAfterElevenAttempts) {
    driver_.database.answer({});
    const auto rows = OpenRecordset(u"SET NOCOUNT ON", connection_, -1, -1, -1, false, false);
    EXPECT_EQ(rows->State(), ado::ObjectStateEnum::adStateClosed);
    EXPECT_EQ(driver_.database.scripts.size(), 11U);
}

TEST_F(FailingOpenTest, ControllaConnessioneCalledTwiceWithTheSameVariableOpensOnlyOneConnection) {
    Variant connection(u"Provider=Fake");
    const int before = driver_.database.opened;
    ControllaConnessione(connection);
    const auto first = connection.as<Ref<Object>>();
    ControllaConnessione(connection);
    EXPECT_EQ(driver_.database.opened, before + 1);
    EXPECT_EQ(connection.as<Ref<Object>>(), first);
}

TEST(ControllaConnessione, RaisesWhatTheOpeningRaises) {
    Variant connection(u"Provider=Sconosciuto");
    EXPECT_EQ(raisedBy([&] {
                  ControllaConnessione(connection);
                  return 0;
              }),
              ado::errors::kProviderNotFound);
    EXPECT_TRUE(connection.isString());
}

class PositionTest : public ::testing::Test {
protected:
    PositionTest()
        : rows_(OpenRecordset(u"SELECT 1 AS N UNION ALL SELECT 2 UNION ALL SELECT 3 UNION ALL "
                              u"SELECT 4",
                              openMemory())) {}

    [[nodiscard]] std::string after(const Variant& position) {
        EXPECT_FALSE(kapGoTo(rows_, position));
        return rows_->Bof() ? "BOF" : rows_->Eof() ? "EOF" : shown(fieldOf(rows_, 0));
    }

    LocaleScope locale_{"it-IT"};
    Ref<ado::Recordset> rows_;
};

TEST_F(PositionTest, MovesToTheLastRowInAnyLetterCase) {
    EXPECT_EQ(after(u"last"), "Long 4");
    EXPECT_EQ(after(u"First"), "Long 1");
}

TEST_F(PositionTest, MovesToARowNumberCountedFromOne) {
    EXPECT_EQ(after(3), "Long 3");
    EXPECT_EQ(after(u"2"), "Long 2");
    EXPECT_EQ(after(1), "Long 1");
}

TEST_F(PositionTest, MovesBeforeTheFirstRowForZero) {
    EXPECT_EQ(after(0), "BOF");
}

TEST_F(PositionTest, MovesBehindTheLastRowForANumberThatIsTooLarge) {
    EXPECT_EQ(after(99), "EOF");
}

TEST_F(PositionTest, SubtractsOneBeforeItRounds) {
    EXPECT_EQ(after(2.5), "Long 3");
    EXPECT_EQ(after(u"2,5"), "Long 3");
    EXPECT_EQ(after(1.5), "Long 1");
    EXPECT_EQ(after(3.4), "Long 3");
    EXPECT_EQ(after(0.5), "Long 1");
}

TEST_F(PositionTest, RaisesForAPositionBeyondAllNumbersOfRows) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(raisedBy([&] { return kapGoTo(rows_, kLowest); }), errors::kOverflow);
    EXPECT_EQ(raisedBy([&] { return kapGoTo(rows_, 1e300); }), errors::kOverflow);
}

TEST_F(PositionTest, RaisesForATextThatIsNoNumber) {
    EXPECT_EQ(raisedBy([&] { return kapGoTo(rows_, u"mezzo"); }), errors::kTypeMismatch);
}

TEST(KapGoTo, AnEmptyRecordsetStaysWhereItIsButFailsForANumberOtherThanOne) {
    auto rows = OpenRecordset(u"SELECT 1 AS N WHERE 1 = 0", openMemory());
    EXPECT_FALSE(kapGoTo(rows, u"FIRST"));
    EXPECT_FALSE(kapGoTo(rows, u"LAST"));
    EXPECT_FALSE(kapGoTo(rows, 1));
    EXPECT_EQ(raisedBy([&] { return kapGoTo(rows, 2); }), ado::errors::kNoCurrentRecord);
    // Only exactly 1 is the first row.
    EXPECT_EQ(raisedBy([&] { return kapGoTo(rows, 1.2); }), ado::errors::kNoCurrentRecord);
}

class LineNumberTest : public ::testing::Test {
protected:
    LineNumberTest() : connection_(openMemory()) {}

    [[nodiscard]] std::string next(const char16_t* highest, std::int16_t step = 1,
                                   std::int16_t start = 1) {
        return shown(Riga_Prog(connection_, String(u"SELECT ") + highest, step, start));
    }

    LocaleScope locale_{"it-IT"};
    Ref<ado::Connection> connection_;
};

TEST_F(LineNumberTest, WithStepOneAfterSevenComesEight) {
    EXPECT_EQ(next(u"7"), "Double 8");
}

TEST_F(LineNumberTest, WithStepTenAfterTwentyThreeComesThirtyAndAfterThirtyForty) {
    EXPECT_EQ(next(u"23", 10), "Double 30");
    EXPECT_EQ(next(u"30", 10), "Double 40");
}

TEST_F(LineNumberTest, WithoutALineTheStartIsTheResultAsAnInteger) {
    EXPECT_EQ(next(u"CAST(NULL AS int)", 1, 10), "Integer 10");
}

TEST_F(LineNumberTest, AStepOrStartOfZeroBecomesOneInTheCallersVariables) {
    std::int16_t step = 0;
    std::int16_t start = 0;
    EXPECT_EQ(shown(Riga_Prog(connection_, u"SELECT CAST(NULL AS int)", step, start)), "Integer 1");
    EXPECT_EQ(step, 1);
    EXPECT_EQ(start, 1);
}

TEST_F(LineNumberTest, AFractionIsLostWhereTheDecimalSeparatorIsAComma) {
    EXPECT_EQ(next(u"CAST(7.5 AS decimal(5,1))"), "Double 8");
    const LocaleScope american("en-US");
    EXPECT_EQ(next(u"CAST(7.5 AS decimal(5,1))"), "Double 8.5");  // 7.5 + 1 - (8 mod 1)
}

TEST_F(LineNumberTest, TheLowestNumberHasARestByAnyStep) {
    EXPECT_EQ(next(u"CAST(-2147483648 AS int)", -1), "Double -2147483649");
    EXPECT_EQ(next(u"CAST(-2147483648 AS int)", 10), "Double -2147483630");
    EXPECT_EQ(raisedBy([&] { return next(u"CAST(2147483648 AS bigint)"); }), errors::kOverflow);
}

TEST_F(LineNumberTest, AQueryWithoutRowsFailsWhenTheFieldIsRead) {
    EXPECT_EQ(raisedBy([&] { return next(u"1 WHERE 1 = 0"); }), ado::errors::kNoCurrentRecord);
}

}  // namespace
}  // namespace kap::db
