#include <kaputil/ado/recordset.hpp>

#include <array>

#include <gtest/gtest.h>

#include <kaputil/ado/error_numbers.hpp>
#include <kaputil/frame/array.hpp>
#include <kaputil/frame/locale.hpp>

#include "support/database.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::openMemory;
using test::raisedBy;
using test::shown;
using test::valueOf;

class RecordsetTest : public ::testing::Test {
protected:
    RecordsetTest() : connection_(openMemory()) {
        connection_->Execute(
            u"CREATE TABLE Clienti (Codice int NOT NULL PRIMARY KEY, Nome varchar(30), "
            u"Fido money, Sconto decimal(5,2), Dal datetime, Attivo bit, AggID timestamp);"
            u"INSERT INTO Clienti (Codice, Nome, Fido, Sconto, Dal, Attivo) VALUES "
            u"(1, 'Rossi', 1000.5, 10.25, '2003-12-31 18:30:00', 1), "
            u"(2, 'Bianchi', NULL, NULL, NULL, 0), (3, 'Verdi', 30, 0, '2004-01-01', NULL)");
    }

    [[nodiscard]] Ref<Recordset> all(
        CursorLocationEnum location = CursorLocationEnum::adUseClient) const {
        return openLive(connection_, u"SELECT * FROM Clienti ORDER BY Codice", location);
    }

    LocaleScope locale_{"it-IT"};
    Ref<Connection> connection_;
};

TEST_F(RecordsetTest, ReadsEveryTypeAsItsAutomationType) {
    const auto rows = all();
    EXPECT_EQ(shown(fieldOf(rows, u"Codice")), "Long 1");
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Rossi");
    EXPECT_EQ(shown(fieldOf(rows, u"Fido")), "Currency 1000,5");
    EXPECT_EQ(shown(fieldOf(rows, u"Sconto")), "Decimal 10,25");
    EXPECT_EQ(shown(fieldOf(rows, u"Dal")), "Date 31/12/2003 18:30:00");
    EXPECT_EQ(shown(fieldOf(rows, u"Attivo")), "Boolean Vero");
    EXPECT_EQ(fieldOf(rows, u"AggID").as<Array>().bytes().size(), 8U);
}

TEST_F(RecordsetTest, FindsFieldsByNameIgnoringCaseAndByPosition) {
    const auto rows = all();
    EXPECT_EQ(shown(fieldOf(rows, u"nOmE")), "String Rossi");
    EXPECT_EQ(shown(fieldOf(rows, std::int16_t{1})), "String Rossi");
    EXPECT_EQ(rows->Fields()->Count(), 7);
    EXPECT_EQ(raisedBy([&] { return fieldOf(rows, u"Cognome"); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { return fieldOf(rows, 7); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { return fieldOf(rows, -1); }), errors::kItemNotFound);
}

TEST_F(RecordsetTest, MovesThroughTheRowsAndStopsAtBothEnds) {
    const auto rows = all();
    EXPECT_EQ(rows->RecordCount(), 3);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
    rows->MoveLast();
    EXPECT_EQ(rows->AbsolutePosition(), 3);
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(raisedBy([&] {
                  rows->MoveNext();
                  return 0;
              }),
              errors::kNoCurrentRecord);
    EXPECT_EQ(raisedBy([&] { return fieldOf(rows, 0); }), errors::kNoCurrentRecord);
    rows->MovePrevious();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    rows->Move(-2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    rows->Move(-1);
    EXPECT_TRUE(rows->Bof());
    EXPECT_FALSE(rows->Eof());
    EXPECT_EQ(raisedBy([&] {
                  rows->MovePrevious();
                  return 0;
              }),
              errors::kNoCurrentRecord);
    rows->Move(1, std::int32_t{2});  // one after the last
    EXPECT_TRUE(rows->Eof());
}

TEST_F(RecordsetTest, IsAtBothEndsWhenItHasNoRows) {
    const auto rows = openLive(connection_, u"SELECT * FROM Clienti WHERE Codice = 9");
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(rows->RecordCount(), 0);
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(raisedBy([&] {
                  rows->MoveFirst();
                  return 0;
              }),
              errors::kNoCurrentRecord);
    EXPECT_EQ(raisedBy([&] {
                  rows->MoveLast();
                  return 0;
              }),
              errors::kNoCurrentRecord);
    EXPECT_EQ(raisedBy([&] {
                  rows->Move(1);
                  return 0;
              }),
              errors::kNoCurrentRecord);
}

TEST_F(RecordsetTest, WritesAnEditedRowAndShowsItsNewVersion) {
    const auto rows = all();
    const auto before = fieldOf(rows, u"AggID").as<Array>().bytes();
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditInProgress);
    EXPECT_EQ(shown(rows->Fields()->Item(u"Nome")->OriginalValue()), "String Rossi");
    rows->Update();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
    EXPECT_NE(fieldOf(rows, u"AggID").as<Array>().bytes(), before);
    EXPECT_EQ(
        fieldOf(rows, u"AggID").as<Array>().bytes(),
        valueOf(connection_, u"SELECT AggID FROM Clienti WHERE Codice = 1").as<Array>().bytes());
}

TEST_F(RecordsetTest, UpdatesTheSameRowTwiceInARow) {
    for (const auto location : {CursorLocationEnum::adUseClient, CursorLocationEnum::adUseServer}) {
        const auto rows = all(location);
        rows->Fields()->Item(u"Dal")->setValue(Date{37987.123456});
        rows->Update();
        rows->Fields()->Item(u"Dal")->setValue(Date{37988.654321});
        rows->Update();
        EXPECT_EQ(
            fieldOf(rows, u"Dal").as<Date>().days,
            valueOf(connection_, u"SELECT Dal FROM Clienti WHERE Codice = 1").as<Date>().days);
    }
}

TEST_F(RecordsetTest, SavesAPendingRowWhenMovingAway) {
    const auto rows = all();
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows->MoveNext();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
}

TEST_F(RecordsetTest, ForgetsPendingChangesOnCancel) {
    const auto rows = all();
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(raisedBy([&] {
                  rows->Close();
                  return 0;
              }),
              errors::kIllegalOperation);
    rows->CancelUpdate();
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Rossi");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Rossi");
}

TEST_F(RecordsetTest, RefusesAnUpdateOfAChangedColumnAndWritesNothing) {
    const auto rows = all();
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Gialli' WHERE Codice = 1");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kConcurrency);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Gialli");
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditInProgress);
}

TEST_F(RecordsetTest, AClientCursorAllowsOthersToChangeOtherColumns) {
    const auto rows = all();
    connection_->Execute(u"UPDATE Clienti SET Fido = 5 WHERE Codice = 1");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Fido FROM Clienti WHERE Codice = 1")),
              "Currency 5");
}

TEST_F(RecordsetTest, AServerCursorChecksTheRowVersion) {
    const auto rows = all(CursorLocationEnum::adUseServer);
    connection_->Execute(u"UPDATE Clienti SET Fido = 5 WHERE Codice = 1");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kConcurrency);
}

TEST_F(RecordsetTest, NoticesAChangeOfLetterCase) {
    connection_->Execute(
        u"CREATE TABLE Note (Id int PRIMARY KEY, Testo varchar(20));"
        u"INSERT INTO Note VALUES (1, 'abc')");
    const auto rows = openLive(connection_, u"SELECT * FROM Note");
    connection_->Execute(u"UPDATE Note SET Testo = 'ABC'");
    rows->Fields()->Item(u"Testo")->setValue(u"x");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kConcurrency);
}

TEST_F(RecordsetTest, AddsARow) {
    const auto rows = all();
    rows->AddNew();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditAdd);
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "Null");
    rows->Fields()->Item(u"Codice")->setValue(std::int16_t{7});
    rows->Fields()->Item(u"Fido")->setValue(u"1.234,56");
    rows->Update();
    EXPECT_EQ(rows->RecordCount(), 4);
    EXPECT_EQ(shown(fieldOf(rows, u"Codice")), "Long 7");
    EXPECT_EQ(fieldOf(rows, u"AggID").as<Array>().bytes().size(), 8U);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Fido FROM Clienti WHERE Codice = 7")),
              "Currency 1234,56");
}

TEST_F(RecordsetTest, AddsARowFromNamesAndValues) {
    const auto rows = all();
    rows->AddNew(Array::ofVariants({u"Codice", u"Nome"}), Array::ofVariants({8, u"Blu"}));
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 8")),
              "String Blu");
    rows->Update(u"Nome", u"Viola");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 8")),
              "String Viola");
}

TEST_F(RecordsetTest, ReadsBackTheIdentityOfANewRow) {
    connection_->Execute(
        u"CREATE TABLE Righe (Id int IDENTITY(10,5) PRIMARY KEY, Testo varchar(10) "
        u"DEFAULT 'nuovo')");
    const auto rows = openLive(connection_, u"SELECT * FROM Righe");
    rows->AddNew();
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"Id")), "Long 10");
    EXPECT_EQ(shown(fieldOf(rows, u"Testo")), "String nuovo");
    rows->AddNew(u"Testo", u"b");
    EXPECT_EQ(shown(fieldOf(rows, u"Id")), "Long 15");
    EXPECT_EQ(raisedBy([&] {
                  rows->Fields()->Item(u"Id")->setValue(3);
                  return 0;
              }),
              errors::kMultipleStep);
    rows->Fields()->Item(u"Id")->setValue(u"15");  // what it is already
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
}

TEST_F(RecordsetTest, DeletesTheCurrentRow) {
    const auto rows = all();
    rows->MoveNext();
    rows->Delete();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Clienti")), "Long 2");
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(raisedBy([&] { return fieldOf(rows, 0); }), errors::kRowNotFound);
    rows->Update();  // nothing is pending
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    EXPECT_EQ(rows->AbsolutePosition(), 2);
    rows->MovePrevious();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
}

TEST_F(RecordsetTest, ReachesTheEndAfterDeletingTheOnlyRow) {
    const auto rows = openLive(connection_, u"SELECT * FROM Clienti WHERE Codice = 1");
    rows->Delete();
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_TRUE(rows->Bof());
}

TEST_F(RecordsetTest, RefusesToDeleteARowThatIsGone) {
    const auto rows = all();
    connection_->Execute(u"DELETE FROM Clienti WHERE Codice = 1");
    EXPECT_EQ(raisedBy([&] {
                  rows->Delete();
                  return 0;
              }),
              errors::kConcurrency);
}

TEST_F(RecordsetTest, ReadsTheCurrentRowAgain) {
    const auto rows = all();
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Gialli' WHERE Codice = 1");
    rows->Resync(AffectEnum::adAffectCurrent);
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Gialli");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows->Update();
    connection_->Execute(u"DELETE FROM Clienti WHERE Codice = 1");
    EXPECT_EQ(raisedBy([&] {
                  rows->Resync(AffectEnum::adAffectCurrent);
                  return 0;
              }),
              errors::kRowNotFound);
}

TEST_F(RecordsetTest, ReadsEveryRowAgain) {
    const auto rows = all();
    connection_->Execute(u"UPDATE Clienti SET Fido = 77");
    rows->Resync();
    for (; !rows->Eof(); rows->MoveNext()) {
        EXPECT_EQ(shown(fieldOf(rows, u"Fido")), "Currency 77");
    }
}

TEST_F(RecordsetTest, RunsItsQueryAgain) {
    const auto rows = all();
    connection_->Execute(u"DELETE FROM Clienti WHERE Codice = 1");
    rows->Requery();
    EXPECT_EQ(rows->RecordCount(), 2);
}

TEST_F(RecordsetTest, KeepsItsRowsWhenDisconnected) {
    const auto rows = all();
    rows->setActiveConnection(Variant(Ref<Object>()));
    connection_->Close();
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Rossi");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Neri");
    EXPECT_FALSE(rows->ActiveConnection().as<Ref<Object>>());
}

TEST_F(RecordsetTest, RefusesToWriteWhenTheConnectionWasClosed) {
    const auto rows = all();
    connection_->Close();
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kInvalidConnection);
}

TEST_F(RecordsetTest, LocatesARowOfATableWithoutKeyByAllItsColumns) {
    connection_->Execute(
        u"CREATE TABLE Sfuse (A int, B varchar(5));"
        u"INSERT INTO Sfuse VALUES (1, 'x'), (1, NULL), (2, 'y'), (2, 'y')");
    const auto rows = openLive(connection_, u"SELECT * FROM Sfuse");
    rows->MoveNext();
    rows->Fields()->Item(u"B")->setValue(u"z");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Sfuse WHERE B = 'z'")), "Long 1");
    rows->MoveNext();
    rows->Fields()->Item(u"B")->setValue(u"w");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kUnspecified);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Sfuse WHERE B = 'w'")), "Long 0");
}

TEST_F(RecordsetTest, LocatesByAllColumnsWhenTheKeyIsNotWholeInTheResult) {
    connection_->Execute(
        u"CREATE TABLE Doc (Anno int, Numero int, Nota varchar(9), PRIMARY KEY (Anno, Numero));"
        u"INSERT INTO Doc VALUES (2003, 1, 'a'), (2004, 1, 'b')");
    const auto rows = openLive(connection_, u"SELECT Numero, Nota FROM Doc ORDER BY Anno");
    rows->Fields()->Item(u"Nota")->setValue(u"c");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Doc WHERE Anno = 2003")), "String c");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Doc WHERE Anno = 2004")), "String b");
}

TEST_F(RecordsetTest, WritesTheTablesOfAJoinThatWereChanged) {
    connection_->Execute(
        u"CREATE TABLE Testate (Id int PRIMARY KEY, Cliente int, Nota varchar(9));"
        u"INSERT INTO Testate VALUES (100, 1, 'a')");
    const auto rows =
        openLive(connection_,
                 u"SELECT t.Id, t.Nota, c.Codice, c.Nome FROM Testate t INNER JOIN Clienti c ON "
                 u"c.Codice = t.Cliente");
    rows->Fields()->Item(u"Nota")->setValue(u"b");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Testate")), "String b");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
}

TEST_F(RecordsetTest, ChangesBothTablesOfAJoinOrNeither) {
    connection_->Execute(
        u"CREATE TABLE Testate (Id int PRIMARY KEY, Cliente int, Nota varchar(9));"
        u"INSERT INTO Testate VALUES (100, 1, 'a')");
    const auto rows =
        openLive(connection_,
                 u"SELECT t.Id, t.Nota, c.Codice, c.Nome FROM Testate t INNER JOIN Clienti c ON "
                 u"c.Codice = t.Cliente");
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Altro' WHERE Codice = 1");
    rows->Fields()->Item(u"Nota")->setValue(u"b");
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kConcurrency);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Testate")), "String a");
}

TEST_F(RecordsetTest, RefusesValuesThatDoNotConvertOrFit) {
    const auto rows = all();
    const auto assign = [&](const char16_t* field, const Variant& value) {
        return raisedBy([&] {
            rows->Fields()->Item(field)->setValue(value);
            return 0;
        });
    };
    EXPECT_EQ(assign(u"Codice", u"abc"), errors::kWrongValueType);
    EXPECT_EQ(assign(u"Codice", 3e9), errors::kMultipleStep);
    EXPECT_EQ(assign(u"Sconto", 1000.0), errors::kMultipleStep);
    EXPECT_EQ(assign(u"Nome", std::u16string_view(std::u16string(31, u'x'))),
              errors::kMultipleStep);
    EXPECT_EQ(assign(u"Dal", u"31/02/2003"), errors::kWrongValueType);
    EXPECT_EQ(assign(u"AggID", Array::ofBytes({1, 2, 3, 4, 5, 6, 7, 8})), errors::kMultipleStep);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
}

TEST_F(RecordsetTest, RefusesChangesWhenReadOnly) {
    const auto rows = connection_->Execute(u"SELECT * FROM Clienti");
    const auto code = errors::kFeatureNotAvailable;
    EXPECT_EQ(raisedBy([&] {
                  rows->Fields()->Item(1)->setValue(u"x");
                  return 0;
              }),
              code);
    EXPECT_EQ(raisedBy([&] {
                  rows->AddNew();
                  return 0;
              }),
              code);
    EXPECT_EQ(raisedBy([&] {
                  rows->Delete();
                  return 0;
              }),
              code);
}

TEST_F(RecordsetTest, RaisesTheDatabasesErrorForARefusedRow) {
    const auto rows = all();
    EXPECT_EQ(raisedBy([&] {
                  rows->AddNew(u"Codice", 1);
                  return 0;
              }),
              errors::kIntegrity);
    EXPECT_EQ(connection_->Errors()->Item(0)->NativeError(), 2627);
    rows->CancelUpdate();
    EXPECT_EQ(raisedBy([&] {
                  rows->AddNew(u"Nome", u"x");
                  return 0;
              }),
              errors::kIntegrity);
    EXPECT_EQ(connection_->Errors()->Item(0)->NativeError(), 515);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditAdd);
    rows->CancelUpdate();
    EXPECT_EQ(rows->RecordCount(), 3);
}

TEST_F(RecordsetTest, RefusesWhatNeedsAnOpenRecordset) {
    const auto rows = make<Recordset>();
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(rows->Fields()->Count(), 0);
    EXPECT_EQ(raisedBy([&] { return rows->Eof(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { return rows->RecordCount(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] {
                  rows->MoveFirst();
                  return 0;
              }),
              errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] {
                  rows->Update();
                  return 0;
              }),
              errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] {
                  rows->Close();
                  return 0;
              }),
              errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] {
                  rows->Open(u"SELECT 1");
                  return 0;
              }),
              errors::kInvalidConnection);
}

TEST_F(RecordsetTest, RefusesToOpenOrChangeOptionsTwice) {
    const auto rows = all();
    EXPECT_EQ(raisedBy([&] {
                  rows->Open(u"SELECT 1");
                  return 0;
              }),
              errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] {
                  rows->setCursorType(CursorTypeEnum::adOpenStatic);
                  return 0;
              }),
              errors::kObjectOpen);
}

TEST_F(RecordsetTest, RefusesOptionsThatDoNotExist) {
    const auto rows = make<Recordset>();
    EXPECT_EQ(raisedBy([&] {
                  rows->setCursorType(CursorTypeEnum{9});
                  return 0;
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] {
                  rows->setLockType(LockTypeEnum{0});
                  return 0;
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] {
                  rows->setCursorLocation(CursorLocationEnum{1});
                  return 0;
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] {
                  rows->Open(u"x", Variant(connection_), CursorTypeEnum::adOpenStatic,
                             LockTypeEnum::adLockOptimistic, 77);
                  return 0;
              }),
              errors::kInvalidArgument);
}

TEST_F(RecordsetTest, OpensATableByName) {
    connection_->Execute(u"CREATE TABLE [Nomi strani] (A int); INSERT [Nomi strani] VALUES (5)");
    const auto rows = make<Recordset>();
    rows->Open(u"Nomi strani", Variant(connection_), CursorTypeEnum::adOpenUnspecified,
               LockTypeEnum::adLockUnspecified, 2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5");
}

TEST_F(RecordsetTest, OpensAConnectionStringByItself) {
    const auto rows = make<Recordset>();
    rows->Open(u"SELECT 'a' AS Lettera", test::memoryDatabase().c_str());
    EXPECT_EQ(shown(fieldOf(rows, u"Lettera")), "String a");
    EXPECT_TRUE(rows->ActiveConnection().as<Ref<Object>>());
}

TEST_F(RecordsetTest, AClientCursorIsAlwaysStatic) {
    EXPECT_EQ(all()->CursorType(), CursorTypeEnum::adOpenStatic);
    EXPECT_EQ(all(CursorLocationEnum::adUseServer)->CursorType(), CursorTypeEnum::adOpenKeyset);
}

TEST_F(RecordsetTest, TellsFieldAttributesAsTheProviderDoes) {
    const auto client = all();
    constexpr std::int32_t kUpdatable = 4;
    constexpr std::int32_t kUnknown = 8;
    constexpr std::int32_t kRowVersion = 512;
    EXPECT_EQ(client->Fields()->Item(u"Nome")->Attributes() & (kUpdatable | kUnknown), kUnknown);
    EXPECT_EQ(client->Fields()->Item(u"AggID")->Attributes() & (kUpdatable | kUnknown), 0);
    EXPECT_EQ(client->Fields()->Item(u"AggID")->Attributes() & kRowVersion, kRowVersion);
    const auto expression = openLive(connection_, u"SELECT 1 + 1 AS Due");
    EXPECT_EQ(expression->Fields()->Item(0)->Attributes() & kUnknown, kUnknown);
    const auto live = all(CursorLocationEnum::adUseServer);
    EXPECT_EQ(live->Fields()->Item(u"Nome")->Attributes() & (kUpdatable | kUnknown), kUpdatable);
    EXPECT_EQ(live->Fields()->Item(u"AggID")->Attributes() & (kUpdatable | kUnknown), 0);
}

TEST_F(RecordsetTest, AReplacedNullReadsNeutralAndStaysNullInTheDatabase) {
    const auto rows = all();
    rows->replaceNulls(2);
    rows->replaceNulls(4);
    rows->MoveNext();
    EXPECT_EQ(shown(fieldOf(rows, u"Fido")), "Currency 0");
    EXPECT_EQ(fieldOf(rows, u"Dal").as<Date>().days, 0);
    EXPECT_EQ(shown(rows->Fields()->Item(u"Fido")->OriginalValue()), "Null");
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
    rows->MoveFirst();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Fido FROM Clienti WHERE Codice = 2")), "Null");
    rows->MoveNext();
    rows->Fields()->Item(u"Fido")->setValue(Currency{});
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Fido FROM Clienti WHERE Codice = 2")),
              "Currency 0");
}

TEST_F(RecordsetTest, AnswersLateBoundCalls) {
    const auto rows = all();
    Object& object = *rows;
    EXPECT_EQ(shown(test::call(object, u"eof")), "Boolean Falso");
    EXPECT_EQ(shown(test::call(object, u"RECORDCOUNT")), "Long 3");
    // rs("Nome"): the default member Fields, whose default member Item, whose default is Value.
    const Variant field = object.invoke(kDefaultMember, InvokeKind::MethodOrGet,
                                        Arguments{std::span(std::array{Variant(u"Nome")}), {}});
    EXPECT_EQ(convert::toString(field), String(u"Rossi"));
    test::invoke(*field.as<Ref<Object>>(), u"Value", InvokeKind::Let, {u"Neri"});
    test::call(object, u"Update");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
}

TEST_F(RecordsetTest, FieldsOutliveTheirRecordset) {
    auto rows = all();
    const auto field = rows->Fields()->Item(u"Nome");
    rows = {};
    EXPECT_EQ(shown(field->Value()), "String Rossi");
}

}  // namespace
}  // namespace kap::ado
