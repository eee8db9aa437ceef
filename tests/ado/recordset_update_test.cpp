#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::raisedBy;
using test::shown;
using test::valueOf;

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
    test::prepare(connection_,
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
    test::prepare(connection_,
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

TEST_F(RecordsetTest, IsClosedWithItsConnection) {
    const auto rows = all();
    const auto clone = rows->Clone();
    const auto disconnected = all();
    disconnected->setActiveConnection(Variant(Ref<Object>()));
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    connection_->Close();
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(clone->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(disconnected->RecordCount(), 3);
    EXPECT_EQ(raisedBy([&] { rows->Update(); }), errors::kObjectClosed);
}

TEST_F(RecordsetTest, LocatesARowOfATableWithoutKeyByAllItsColumns) {
    test::prepare(connection_,
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
    test::prepare(
        connection_,
        u"CREATE TABLE Doc (Anno int, Numero int, Nota varchar(9), PRIMARY KEY (Anno, Numero));"
        u"INSERT INTO Doc VALUES (2003, 1, 'a'), (2004, 1, 'b')");
    const auto rows = openLive(connection_, u"SELECT Numero, Nota FROM Doc ORDER BY Anno");
    rows->Fields()->Item(u"Nota")->setValue(u"c");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Doc WHERE Anno = 2003")), "String c");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nota FROM Doc WHERE Anno = 2004")), "String b");
}

TEST_F(RecordsetTest, WritesTheTablesOfAJoinThatWereChanged) {
    test::prepare(connection_,
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
    test::prepare(connection_,
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

}  // namespace
}  // namespace kap::ado
