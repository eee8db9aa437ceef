#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;
using test::valueOf;

Variant at(const Variant& values, std::int32_t field, std::int32_t row) {
    const std::int32_t indexes[] = {field, row};
    return values.as<Array>().at(indexes);
}

TEST_F(RecordsetTest, GivesItsRecordsAsAnArray) {
    const auto rows = all();
    rows->MoveNext();
    const Variant values = rows->GetRows();
    EXPECT_EQ(values.as<Array>().upperBound(1), 6);
    EXPECT_EQ(values.as<Array>().upperBound(2), 1);
    EXPECT_EQ(shown(at(values, 0, 0)), "Long 2");
    EXPECT_EQ(shown(at(values, 1, 1)), "String Verdi");
    EXPECT_EQ(shown(at(values, 2, 0)), "Null");
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(raisedBy([&] { return rows->GetRows(); }), errors::kNoCurrentRecord);
}

TEST_F(RecordsetTest, GivesSomeFieldsOfSomeRecordsAsAnArray) {
    const auto rows = all();
    const Variant two = rows->GetRows(2, Variant::missing(), Array::ofVariants({u"nome", 0}));
    EXPECT_EQ(two.as<Array>().upperBound(1), 1);
    EXPECT_EQ(two.as<Array>().upperBound(2), 1);
    EXPECT_EQ(shown(at(two, 0, 1)), "String Bianchi");
    EXPECT_EQ(shown(at(two, 1, 1)), "Long 2");
    EXPECT_EQ(rows->AbsolutePosition(), 3);
    const Variant fromFirst = rows->GetRows(99, std::int32_t{1}, u"Codice");
    EXPECT_EQ(fromFirst.as<Array>().upperBound(2), 2);
    EXPECT_EQ(raisedBy([&] { return rows->GetRows(1, std::int32_t{1}, u"Manca"); }),
              errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { return rows->GetRows(1, std::int32_t{1}, 7); }),
              errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { return rows->GetRows(-2, std::int32_t{1}); }),
              errors::kInvalidArgument);
}

TEST_F(RecordsetTest, WritesAndReadsLongValuesInPieces) {
    test::prepare(connection_,
                  u"CREATE TABLE Foto (Id int PRIMARY KEY, Immagine image, Nota text);"
                  u"INSERT INTO Foto VALUES (1, 0x0102, 'vecchia'), (2, NULL, NULL)");
    const auto rows = test::openLive(connection_, u"SELECT * FROM Foto ORDER BY Id");
    const auto image = rows->Fields()->Item(u"Immagine");
    const auto note = rows->Fields()->Item(u"Nota");
    image->AppendChunk(Array::ofBytes({9, 8, 7}));
    image->AppendChunk(Array::ofBytes({6}));
    note->AppendChunk(u"città ");
    note->AppendChunk(u"vecchia");
    rows->Update();
    image->AppendChunk(Array::ofBytes({5, 4, 3}));  // a new edit begins anew
    rows->Update();
    EXPECT_EQ(valueOf(connection_, u"SELECT Immagine FROM Foto WHERE Id = 1").as<Array>().bytes(),
              (std::vector<std::uint8_t>{5, 4, 3}));
    EXPECT_EQ(shown(note->GetChunk(5)), "String città");
    EXPECT_EQ(shown(note->GetChunk(100)), "String  vecchia");
    EXPECT_EQ(shown(note->GetChunk(1)), "Null");
    EXPECT_EQ(image->GetChunk(2).as<Array>().bytes(), (std::vector<std::uint8_t>{5, 4}));
    rows->MoveNext();
    EXPECT_EQ(shown(image->GetChunk(2)), "Null");
    rows->MoveFirst();
    EXPECT_EQ(image->GetChunk(9).as<Array>().bytes(), (std::vector<std::uint8_t>{5, 4, 3}));
    EXPECT_EQ(raisedBy([&] { return image->GetChunk(-1); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { return rows->Fields()->Item(0)->GetChunk(1); }),
              errors::kIllegalOperation);
}

TEST_F(RecordsetTest, AnAssignedValueIsReplacedByTheFirstPiece) {
    test::prepare(connection_, u"CREATE TABLE Note (Id int PRIMARY KEY, Testo ntext)");
    const auto rows = test::openLive(connection_, u"SELECT * FROM Note");
    rows->AddNew(u"Id", 1);
    const auto text = rows->Fields()->Item(u"Testo");
    text->setValue(u"intero");
    text->AppendChunk(u"a");
    text->AppendChunk(u"b");
    EXPECT_EQ(shown(text->GetChunk(9)), "String ab");
    text->setValue(u"nuovo");
    EXPECT_EQ(shown(text->GetChunk(9)), "String nuovo");
    rows->CancelUpdate();
}

TEST_F(RecordsetTest, GivesItsRecordsAsAText) {
    const auto rows =
        connection_->Execute(u"SELECT Codice, Nome, Fido, Dal FROM Clienti ORDER BY Codice");
    EXPECT_EQ(rows->GetString(),
              String(u"1\tRossi\t1000,5\t31/12/2003 18:30:00\r2\tBianchi\t\t\r3\tVerdi\t30\t"
                     u"01/01/2004\r"));
    EXPECT_TRUE(rows->Eof());
}

TEST_F(RecordsetTest, GivesATextWithOtherSigns) {
    const auto rows = all();
    rows->setFilter(u"Codice < 3");
    EXPECT_EQ(rows->GetString(StringFormatEnum::adClipString, 1, u";", u"\n", u"-"),
              String(u"1;Rossi;1000,5;10,25;31/12/2003 18:30:00;Vero;00000000000007D1\n"));
    EXPECT_EQ(rows->AbsolutePosition(), 2);
    EXPECT_EQ(raisedBy([&] { return rows->GetString(StringFormatEnum{1}); }),
              errors::kInvalidArgument);
}

TEST_F(RecordsetTest, GivesTheNextAnswersOfAScript) {
    auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT 1 AS A; UPDATE Clienti SET Fido = 1; SELECT 'x' AS B, 2 AS C",
               Variant(connection_));
    EXPECT_EQ(shown(fieldOf(rows, u"A")), "Long 1");
    Variant written;
    auto second = rows->NextRecordset(written);
    EXPECT_EQ(second->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(shown(written), "Long 3");
    const auto third = second->NextRecordset(written);
    EXPECT_EQ(shown(fieldOf(third, u"B")), "String x");
    EXPECT_EQ(shown(written), "Long -1");
    EXPECT_EQ(third->CursorLocation(), CursorLocationEnum::adUseClient);
    EXPECT_FALSE(third->NextRecordset());
    EXPECT_EQ(shown(fieldOf(rows, u"A")), "Long 1");
}

TEST_F(RecordsetTest, ExecuteKeepsTheAnswersBehindTheFirst) {
    const auto rows = connection_->Execute(u"UPDATE Clienti SET Fido = 1; SELECT 1; SELECT 2");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    const auto second = rows->NextRecordset();
    EXPECT_EQ(shown(fieldOf(second, 0)), "Long 2");
    EXPECT_FALSE(second->NextRecordset());
}

TEST_F(RecordsetTest, ThereIsNothingBehindOneAnswer) {
    EXPECT_FALSE(all()->NextRecordset());
}

TEST_F(RecordsetTest, ACloneHasAPositionFilterAndOrderOfItsOwn) {
    const auto rows = all();
    rows->MoveLast();
    rows->setFilter(u"Codice > 1");
    const auto clone = rows->Clone();
    EXPECT_EQ(clone->RecordCount(), 3);
    EXPECT_EQ(clone->AbsolutePosition(), 1);
    clone->setBookmark(rows->Bookmark());
    EXPECT_EQ(shown(fieldOf(clone, 0)), "Long 2");
    clone->setSort(u"Codice DESC");
    EXPECT_EQ(shown(fieldOf(clone, 0)), "Long 3");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
    EXPECT_EQ(clone->Source().as<String>(), rows->Source().as<String>());
}

TEST_F(RecordsetTest, WhatACloneChangesTheOtherSees) {
    const auto rows = all();
    const auto clone = rows->Clone();
    clone->Update(u"Nome", u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Neri");
    clone->AddNew(Array::ofVariants({u"Codice", u"Nome"}), Array::ofVariants({9, u"Blu"}));
    EXPECT_EQ(rows->RecordCount(), 4);
    rows->setFilter(u"Codice > 2");
    clone->AddNew(Array::ofVariants({u"Codice", u"Nome"}), Array::ofVariants({10, u"Viola"}));
    EXPECT_EQ(rows->RecordCount(), 3);
    clone->MoveFirst();
    clone->Delete();
    rows->setFilter(u"");
    EXPECT_EQ(rows->RecordCount(), 4);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
}

TEST_F(RecordsetTest, AClonesPendingChangeIsItsOwn) {
    const auto rows = all();
    const auto clone = rows->Clone();
    clone->Fields()->Item(u"Nome")->setValue(u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Rossi");
    clone->CancelUpdate();
}

TEST_F(RecordsetTest, AReadOnlyCloneCannotChangeTheRecords) {
    const auto clone = all()->Clone(LockTypeEnum::adLockReadOnly);
    EXPECT_EQ(clone->LockType(), LockTypeEnum::adLockReadOnly);
    EXPECT_EQ(raisedBy([&] {
                  clone->Update(u"Nome", u"x");
                  return 0;
              }),
              errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { return all()->Clone(LockTypeEnum::adLockOptimistic); }),
              errors::kInvalidArgument);
}

TEST_F(RecordsetTest, ACloneOutlivesItsRecordset) {
    auto rows = all();
    const auto clone = rows->Clone();
    rows->Close();
    rows = {};
    EXPECT_EQ(shown(fieldOf(clone, u"Nome")), "String Rossi");
}

TEST_F(RecordsetTest, ForgetsFilterAndOrderWhenTheQueryRunsAgain) {
    const auto rows = all();
    rows->setSort(u"Codice DESC");
    rows->setFilter(u"Codice = 2");
    rows->Requery();
    EXPECT_EQ(rows->RecordCount(), 3);
    EXPECT_EQ(rows->Sort(), String());
    EXPECT_EQ(shown(rows->Filter()), "String ");
}

TEST_F(RecordsetTest, TellsADeletedRecordByItsEditMode) {
    const auto rows = all();
    rows->Delete();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditDelete);
    rows->MoveNext();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
}

TEST_F(RecordsetTest, TakesNamedArgumentsByLateBinding) {
    const auto rows = all();
    test::callNamed(*rows, u"Find", {{u"Criteria", u"Codice = 3"}});
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    test::invoke(*rows, u"Filter", InvokeKind::Let, {u"Codice < 3"});
    EXPECT_EQ(shown(test::call(*rows, u"RecordCount")), "Long 2");
    test::invoke(*rows, u"Filter", InvokeKind::Let, {0});
    const Variant values = test::callNamed(*rows, u"GetRows", {{u"Rows", 1}, {u"Fields", u"Nome"}});
    EXPECT_EQ(shown(at(values, 0, 0)), "String Rossi");
    EXPECT_EQ(shown(test::call(*rows, u"Supports", {0x1008000})), "Boolean Vero");
    EXPECT_TRUE(test::call(*rows, u"Clone").isObject());
}

}  // namespace
}  // namespace kap::ado
