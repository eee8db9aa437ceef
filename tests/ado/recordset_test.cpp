#include <array>

#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::raisedBy;
using test::shown;
using test::valueOf;

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
    std::array<Variant, 1> name = {u"Nome"};
    const Variant field =
        object.invoke(kDefaultMember, InvokeKind::MethodOrGet, Arguments{name, {}});
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
