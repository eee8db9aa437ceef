// What the objects answer in each state: closed, without a record, before the first assignment.
#include <kaputil/ado/command.hpp>

#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class RecordsetStateTest : public RecordsetTest {
protected:
    // One number column and one text column, made by hand and not open yet.
    static Ref<Recordset> madeByHand() {
        auto rows = make<Recordset>();
        rows->Fields()->Append(u"N", DataTypeEnum::adInteger);
        rows->Fields()->Append(u"Nome", DataTypeEnum::adVarWChar, 20);
        return rows;
    }

    [[nodiscard]] Ref<Recordset> none() const {
        return test::openLive(connection_, u"SELECT * FROM Clienti WHERE 1 = 0",
                              CursorLocationEnum::adUseClient);
    }
};

TEST_F(RecordsetStateTest, AFilterIsTakenWhileClosedAndHoldsOnceOpened) {
    const auto rows = make<Recordset>();
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->setFilter(u"Codice > 1");
    rows->setSort(u"Codice DESC");
    EXPECT_EQ(shown(rows->Filter()), "String Codice > 1");
    rows->Open(u"SELECT * FROM Clienti", Variant(connection_));
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    EXPECT_EQ(shown(rows->Filter()), "String Codice > 1");
    rows->Close();
    EXPECT_EQ(shown(rows->Filter()), "String ");
}

TEST_F(RecordsetStateTest, AFilterThatCannotHoldLeavesTheRecordsetClosed) {
    const auto rows = make<Recordset>();
    rows->setFilter(u"Manca = 1");
    EXPECT_EQ(raisedBy([&] { rows->Open(u"SELECT * FROM Clienti", Variant(connection_)); }),
              errors::kItemNotFound);
    EXPECT_EQ(rows->State(), ObjectStateEnum::adStateClosed);
}

TEST_F(RecordsetStateTest, EmptyAndNullAreNoFilter) {
    for (const auto& rows : {make<Recordset>(), all()}) {
        EXPECT_EQ(raisedBy([&] { rows->setFilter(Variant()); }), errors::kInvalidArgument);
        EXPECT_EQ(raisedBy([&] { rows->setFilter(Variant::null()); }), errors::kInvalidArgument);
        EXPECT_EQ(shown(rows->Filter()), "String ");
    }
}

TEST_F(RecordsetStateTest, TheEditModeNeedsARecord) {
    EXPECT_EQ(raisedBy([&] { (void)none()->EditMode(); }), errors::kNoCurrentRecord);
    const auto rows = all();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditNone);
    rows->MoveLast();
    rows->MoveNext();
    EXPECT_EQ(raisedBy([&] { (void)rows->EditMode(); }), errors::kNoCurrentRecord);
    rows->AddNew();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditAdd);
    rows->CancelUpdate();
    EXPECT_EQ(raisedBy([&] { (void)make<Recordset>()->EditMode(); }), errors::kObjectClosed);
}

TEST_F(RecordsetStateTest, EmptyIsNoBookmark) {
    const auto rows = all();
    for (const Variant& none : {Variant(), Variant::missing()}) {
        EXPECT_EQ(raisedBy([&] { rows->setBookmark(none); }), errors::kInvalidArgument);
    }
    EXPECT_EQ(raisedBy([&] { rows->setBookmark(u"uno"); }), errors::kBadBookmark);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
}

TEST_F(RecordsetStateTest, NothingIsNoField) {
    const auto rows = all();
    for (const Variant& none : {Variant(Ref<Object>()), Variant::null()}) {
        EXPECT_EQ(raisedBy([&] { (void)rows->Fields()->Item(none); }), errors::kItemNotFound);
    }
}

TEST_F(RecordsetStateTest, ANewFieldMadeByHandIsEmptyUntilItIsAssigned) {
    const auto rows = madeByHand();
    rows->Open();
    rows->AddNew();
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Empty");
    EXPECT_EQ(rows->Fields()->Item(u"Nome")->ActualSize(), 0);
    rows->Fields()->Item(u"N")->setValue(7);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 7");
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "Empty");
    rows->Update();
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "Null");
}

TEST_F(RecordsetStateTest, ARecordThatNoDatabaseHoldsStaysNew) {
    const auto rows = madeByHand();
    rows->Open();
    rows->AddNew(u"N", 1);
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditAdd);
    rows->Update();
    rows->Cancel();
    EXPECT_EQ(rows->EditMode(), EditModeEnum::adEditAdd);

    const auto waiting = make<Recordset>();
    waiting->setCursorLocation(CursorLocationEnum::adUseClient);
    waiting->Open(u"SELECT Codice, Nome FROM Clienti", Variant(connection_),
                  CursorTypeEnum::adOpenStatic, LockTypeEnum::adLockBatchOptimistic);
    waiting->AddNew(u"Codice", 9);
    EXPECT_EQ(waiting->EditMode(), EditModeEnum::adEditAdd);
    waiting->UpdateBatch();
    EXPECT_EQ(waiting->EditMode(), EditModeEnum::adEditNone);
}

TEST_F(RecordsetStateTest, AFieldIsNoLongerValidOnceItsRecordsetIsClosed) {
    const auto rows = all();
    const auto field = rows->Fields()->Item(u"Nome");
    rows->Close();
    EXPECT_EQ(raisedBy([&] { (void)field->Name(); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { (void)field->Value(); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { field->setValue(1); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { (void)field->Type(); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { (void)field->GetChunk(1); }), errors::kObjectNotSet);
    EXPECT_EQ(rows->Fields()->Count(), 0);
}

TEST_F(RecordsetStateTest, AFieldFollowsItsColumnThroughRequery) {
    const auto rows = all();
    const auto fields = rows->Fields();
    const auto field = fields->Item(u"Nome");
    connection_->Execute(u"UPDATE Clienti SET Nome = 'Neri' WHERE Codice = 1");
    rows->Requery();
    EXPECT_EQ(shown(field->Value()), "String Neri");
    rows->Close();
    rows->Open(u"SELECT Codice FROM Clienti ORDER BY Codice", Variant(connection_));
    EXPECT_EQ(fields->Count(), 1);
    EXPECT_EQ(shown(fields->Item(0)->Value()), "Long 1");
    EXPECT_EQ(raisedBy([&] { (void)field->Name(); }), errors::kObjectNotSet);
}

TEST_F(RecordsetStateTest, AFieldTakenAwayIsGoneAndTheOthersKeepTheirColumns) {
    const auto rows = madeByHand();
    const auto first = rows->Fields()->Item(0);
    const auto second = rows->Fields()->Item(1);
    rows->Fields()->Delete(0);
    EXPECT_EQ(raisedBy([&] { (void)first->Name(); }), errors::kObjectNotSet);
    EXPECT_EQ(second->Name(), String(u"Nome"));
    rows->Open();
    rows->AddNew(u"Nome", u"x");
    EXPECT_EQ(shown(second->Value()), "String x");
}

TEST_F(RecordsetStateTest, WhatAnAppendedFieldIsLikeFollowsFromItsTypeUnlessItIsGiven) {
    const auto rows = madeByHand();
    const auto fields = rows->Fields();
    fields->Append(u"Dato", DataTypeEnum::adVarChar, 5, FieldAttributeEnum::adFldIsNullable);
    fields->Append(u"Sconto", DataTypeEnum::adNumeric);
    const auto number = fields->Item(u"N");
    EXPECT_EQ(number->Precision(), 10);
    EXPECT_EQ(number->NumericScale(), 255);
    EXPECT_EQ(number->DefinedSize(), 4);
    EXPECT_EQ(number->Attributes() & 16, 16);
    EXPECT_EQ(fields->Item(u"Nome")->Precision(), 255);
    EXPECT_EQ(fields->Item(u"Dato")->Attributes(), 32);
    EXPECT_EQ(fields->Item(u"Sconto")->Precision(), 18);
    EXPECT_EQ(fields->Item(u"Sconto")->NumericScale(), 0);
    number->setAttributes(64);
    EXPECT_EQ(number->Attributes(), 64);
    number->setType(DataTypeEnum::adDouble);
    EXPECT_EQ(number->Precision(), 15);
    EXPECT_EQ(number->DefinedSize(), 8);
    number->setPrecision(7);
    EXPECT_EQ(number->Precision(), 7);
    fields->Item(u"Dato")->setDefinedSize(9);
    EXPECT_EQ(fields->Item(u"Dato")->DefinedSize(), 9);
    EXPECT_EQ(raisedBy([&] { fields->Item(u"Dato")->setDefinedSize(0); }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { number->setType(DataTypeEnum::adEmpty); }), errors::kInvalidArgument);
    rows->Open();
    EXPECT_EQ(raisedBy([&] { number->setType(DataTypeEnum::adInteger); }),
              errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { number->setAttributes(0); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { all()->Fields()->Item(0)->setDefinedSize(1); }),
              errors::kIllegalOperation);
}

TEST_F(RecordsetStateTest, AFieldsNameIsTakenOnce) {
    const auto rows = madeByHand();
    EXPECT_EQ(raisedBy([&] { rows->Fields()->Append(u"nOME", DataTypeEnum::adInteger); }),
              errors::kObjectInCollection);
    EXPECT_EQ(raisedBy([&] {
                  rows->Fields()->Append(u"X", DataTypeEnum::adInteger, 0,
                                         FieldAttributeEnum::adFldUnspecified, 5);
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(rows->Fields()->Count(), 2);
}

TEST_F(RecordsetStateTest, AConnectionHasAProviderBeforeItIsToldOne) {
    const auto connection = make<Connection>();
    EXPECT_EQ(connection->Provider(), String(u"MSDASQL"));
    connection->setProvider(u"KapLocal");
    EXPECT_EQ(connection->Provider(), String(u"KapLocal"));
}

TEST_F(RecordsetStateTest, EndingATransactionThatWasNotBegunIsAnError) {
    EXPECT_EQ(raisedBy([&] { connection_->CommitTrans(); }), errors::kNoTransaction);
    EXPECT_EQ(raisedBy([&] { connection_->RollbackTrans(); }), errors::kNoTransaction);
    EXPECT_EQ(connection_->Errors()->Item(0)->Number(), errors::kNoTransaction);
    EXPECT_EQ(connection_->BeginTrans(), 1);
    connection_->CommitTrans();
    EXPECT_EQ(raisedBy([&] { connection_->RollbackTrans(); }), errors::kNoTransaction);
}

TEST_F(RecordsetStateTest, AClosedConnectionHasNoTransactions) {
    const auto closed = make<Connection>();
    EXPECT_EQ(raisedBy([&] { closed->BeginTrans(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { closed->CommitTrans(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { closed->RollbackTrans(); }), errors::kObjectClosed);
}

TEST_F(RecordsetStateTest, WhatExecuteGaveTellsWhatItCameOf) {
    EXPECT_EQ(shown(connection_->Execute(u"SELECT 1 AS A")->Source()), "String SELECT 1 AS A");
    auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    command->setCommandText(u"SELECT ? AS A");
    const auto rows = command->Execute(Variant::missing(), 7);
    EXPECT_EQ(shown(rows->Source()), "String SELECT ? AS A");
    EXPECT_EQ(rows->ActiveCommand().as<Ref<Object>>(), Ref<Object>(command));
    rows->Requery();
    EXPECT_EQ(shown(test::fieldOf(rows, 0)), "Long 7");
    rows->Close();
    EXPECT_FALSE(rows->ActiveCommand().as<Ref<Object>>());
}

TEST_F(RecordsetStateTest, FiltersThatTheReferenceRefusesAreRefused) {
    const auto rows = all();
    for (const char16_t* criteria :
         {u"(Codice = 1 OR Codice = 2) AND Nome = 'Rossi'",
          u"Nome = 'Rossi' AND (Codice = 1 OR Codice = 2)",
          u"((Codice = 1) OR Codice = 2) AND (Codice = 1)", u"Nome LIKE 'R*i'", u"Nome LIKE '*i'",
          u"Nome LIKE '%i'", u"Nome LIKE '*o*i*'"}) {
        EXPECT_EQ(raisedBy([&] { rows->setFilter(criteria); }), errors::kInvalidArgument)
            << String(criteria).utf8();
    }
    EXPECT_EQ(raisedBy([&] { rows->Find(u"Nome LIKE '*i'"); }), errors::kInvalidArgument);
    rows->setFilter(u"(Codice = 1 AND Nome = 'Rossi') OR (Codice = 2 AND Nome LIKE '*ian*')");
    EXPECT_EQ(rows->RecordCount(), 2);
}

TEST_F(RecordsetStateTest, OnlyAClientCursorSorts) {
    const auto rows = all(CursorLocationEnum::adUseServer);
    EXPECT_EQ(raisedBy([&] { rows->setSort(u"Nome"); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { make<Recordset>()->setSort(u"Nome"); }), errors::kFeatureNotAvailable);
}

}  // namespace
}  // namespace kap::ado
