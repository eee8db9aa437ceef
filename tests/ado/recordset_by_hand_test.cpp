#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

// A recordset that is made by hand and belongs to no database.
class ByHandTest : public ::testing::Test {
protected:
    ByHandTest() : rows_(make<Recordset>()) {
        rows_->Fields()->Append(u"TABLE_NAME", DataTypeEnum::adVarChar, 100,
                                FieldAttributeEnum::adFldUnspecified);
        rows_->Fields()->Append(u"COLUMN_NAME", DataTypeEnum::adVarChar, 100);
        rows_->Fields()->Append(u"Prezzo", DataTypeEnum::adCurrency);
    }

    void add(const char16_t* table, const char16_t* column) {
        rows_->AddNew();
        rows_->Fields()->Item(u"TABLE_NAME")->setValue(table);
        rows_->Fields()->Item(u"COLUMN_NAME")->setValue(column);
        rows_->Update();
    }

    LocaleScope locale_{"it-IT"};
    Ref<Recordset> rows_;
};

TEST_F(ByHandTest, OpensEmptyWithItsFields) {
    EXPECT_EQ(rows_->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(rows_->Fields()->Count(), 3);
    rows_->Open();
    EXPECT_EQ(rows_->State(), ObjectStateEnum::adStateOpen);
    EXPECT_TRUE(rows_->Bof());
    EXPECT_TRUE(rows_->Eof());
    EXPECT_EQ(rows_->RecordCount(), 0);
    const auto field = rows_->Fields()->Item(u"column_name");
    EXPECT_EQ(field->Type(), DataTypeEnum::adVarChar);
    EXPECT_EQ(field->DefinedSize(), 100);
    EXPECT_EQ(rows_->Fields()->Item(2)->DefinedSize(), 8);
    EXPECT_EQ(rows_->CursorLocation(), CursorLocationEnum::adUseClient);
    EXPECT_EQ(rows_->CursorType(), CursorTypeEnum::adOpenStatic);
}

TEST_F(ByHandTest, TakesRecordsAndFindsThem) {
    rows_->Open();
    add(u"#T1", u"Codice");
    add(u"#T1", u"Quantità");
    add(u"#T1", u"Prezzo");
    EXPECT_EQ(rows_->RecordCount(), 3);
    rows_->MoveFirst();
    rows_->Find(u"COLUMN_NAME='QUANTITÀ'");
    EXPECT_EQ(shown(fieldOf(rows_, u"COLUMN_NAME")), "String Quantità");
    rows_->MoveFirst();
    rows_->Find(u"COLUMN_NAME='Manca'");
    EXPECT_TRUE(rows_->Eof());
    EXPECT_EQ(shown(Variant(rows_->RecordCount())), "Long 3");
}

TEST_F(ByHandTest, WhatIsNotAssignedIsNull) {
    rows_->Open();
    add(u"a", u"b");
    EXPECT_EQ(shown(fieldOf(rows_, u"Prezzo")), "Null");
    rows_->Update(u"Prezzo", u"1.234,5");
    EXPECT_EQ(shown(fieldOf(rows_, u"Prezzo")), "Currency 1234,5");
    rows_->Delete();
    EXPECT_EQ(rows_->RecordCount(), 0);
}

TEST_F(ByHandTest, RefusesTextsThatAreTooLong) {
    rows_->Open();
    rows_->AddNew();
    EXPECT_EQ(
        raisedBy([&] {
            rows_->Fields()->Item(0)->setValue(std::u16string_view(std::u16string(101, u'x')));
        }),
        errors::kMultipleStep);
}

TEST_F(ByHandTest, FieldsAreFixedOnceItIsOpen) {
    rows_->Open();
    EXPECT_EQ(raisedBy([&] { rows_->Fields()->Append(u"D", DataTypeEnum::adInteger); }),
              errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { rows_->Fields()->Delete(0); }), errors::kIllegalOperation);
}

TEST_F(ByHandTest, FieldsMayBeTakenAwayBeforeItIsOpened) {
    rows_->Fields()->Delete(u"TABLE_NAME");
    EXPECT_EQ(rows_->Fields()->Count(), 2);
    EXPECT_EQ(rows_->Fields()->Item(0)->Name(), String(u"COLUMN_NAME"));
    EXPECT_EQ(raisedBy([&] { rows_->Fields()->Delete(u"TABLE_NAME"); }), errors::kItemNotFound);
    rows_->Fields()->Append(u"TABLE_NAME", DataTypeEnum::adInteger);
    rows_->Open();
    rows_->AddNew(u"TABLE_NAME", 7);
    EXPECT_EQ(shown(fieldOf(rows_, u"TABLE_NAME")), "Long 7");
}

TEST_F(ByHandTest, RefusesFieldsThatCannotBe) {
    const auto fields = rows_->Fields();
    EXPECT_EQ(raisedBy([&] { fields->Append(u"", DataTypeEnum::adInteger); }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { fields->Append(u"prezzo", DataTypeEnum::adInteger); }),
              errors::kObjectInCollection);
    EXPECT_EQ(raisedBy([&] { fields->Append(u"X", DataTypeEnum::adVarChar); }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { fields->Append(u"X", DataTypeEnum{9999}, 5); }),
              errors::kInvalidArgument);
    fields->Append(u"Nota", DataTypeEnum::adLongVarWChar);
    EXPECT_EQ(fields->Item(u"Nota")->DefinedSize(), 2147483647);
}

TEST_F(ByHandTest, DecimalsGetTheirDigitsBeforeTheFirstRecord) {
    rows_->Fields()->Append(u"Sconto", DataTypeEnum::adNumeric);
    const auto field = rows_->Fields()->Item(u"Sconto");
    field->setPrecision(5);
    field->setNumericScale(2);
    EXPECT_EQ(raisedBy([&] { field->setPrecision(19); }), errors::kInvalidArgument);
    rows_->Open();
    rows_->AddNew(u"Sconto", u"10,255");
    EXPECT_EQ(shown(field->Value()), "Decimal 10,26");
    EXPECT_EQ(raisedBy([&] { field->setNumericScale(3); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { field->setValue(1000); }), errors::kMultipleStep);
}

TEST_F(ByHandTest, SortsFiltersAndClones) {
    rows_->Open();
    add(u"b", u"1");
    add(u"a", u"2");
    rows_->setSort(u"TABLE_NAME");
    EXPECT_EQ(shown(fieldOf(rows_, 1)), "String 2");
    rows_->setFilter(u"TABLE_NAME = 'b'");
    EXPECT_EQ(rows_->RecordCount(), 1);
    EXPECT_EQ(rows_->Clone()->RecordCount(), 2);
}

TEST_F(ByHandTest, CannotBeWrittenToADatabase) {
    rows_->setLockType(LockTypeEnum::adLockBatchOptimistic);
    rows_->Open();
    add(u"a", u"b");
    EXPECT_EQ(rows_->Status(), 1);
    rows_->setActiveConnection(Variant(test::openMemory()));
    EXPECT_EQ(raisedBy([&] { rows_->UpdateBatch(); }), errors::kUnspecified);
}

TEST_F(ByHandTest, WithoutFieldsThereIsNothingToOpen) {
    EXPECT_EQ(raisedBy([&] { make<Recordset>()->Open(); }), errors::kInvalidConnection);
}

TEST_F(ByHandTest, IsMadeByLateBoundCalls) {
    const auto rows = make<Recordset>();
    const Variant fields = test::call(*rows, u"Fields");
    test::call(*fields.as<Ref<Object>>(), u"Append", {u"A", 200, 100, -1});
    test::call(*rows, u"Open");
    test::call(*rows, u"AddNew", {u"A", u"x"});
    EXPECT_EQ(shown(fieldOf(rows, u"A")), "String x");
}

}  // namespace
}  // namespace kap::ado
