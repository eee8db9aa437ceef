// What providers tell beyond the members, and the members that are there to be asked.
#include <kaputil/ado/command.hpp>
#include <kaputil/ado/stream.hpp>

#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;

class ProviderPropertiesTest : public RecordsetTest {};

TEST_F(ProviderPropertiesTest, AConnectionTellsItsProduct) {
    const auto properties = connection_->Properties();
    EXPECT_EQ(shown(properties->Item(u"dbms name")->Value()), "String KapLocal");
    EXPECT_EQ(properties->Item(u"Data Source")->Name(), String(u"Data Source"));
    EXPECT_EQ(shown(properties->Item(u"Provider Name")->Value()), "String KapLocal");
    EXPECT_EQ(shown(properties->Item(u"Read-Only Data Source")->Value()), "Boolean Falso");
    EXPECT_EQ(raisedBy([&] { (void)properties->Item(u"Manca"); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { (void)properties->Item(999); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { properties->Item(u"DBMS Name")->setValue(u"x"); }),
              errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { properties->Item(u"Data Source")->setValue(u"x"); }),
              errors::kObjectOpen);
    EXPECT_EQ(static_cast<std::size_t>(properties->Count()), properties->elements().size());
    EXPECT_EQ(properties->Item(u"Data Source")->Attributes(), 2 + 512 + 1024);
}

TEST_F(ProviderPropertiesTest, AClosedConnectionIsOpenedWithWhatItsPropertiesSay) {
    const auto connection = make<Connection>();
    connection->setProvider(u"KapLocal");
    connection->Properties()->Item(u"Data Source")->setValue(u":memory:proprietà");
    connection->Properties()->Item(u"Connect Timeout")->setValue(7);
    EXPECT_EQ(connection->ConnectionTimeout(), 7);
    EXPECT_EQ(shown(connection->Properties()->Item(u"Data Source")->Value()),
              "String :memory:proprietà");
    connection->Open();
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateOpen);
}

TEST_F(ProviderPropertiesTest, TheNextTransactionBeginsAtOnceWhereTheAttributesSaySo) {
    EXPECT_EQ(connection_->Attributes(), 0);
    connection_->setAttributes(131072);
    connection_->BeginTrans();
    connection_->Execute(u"DELETE FROM Clienti WHERE Codice = 1");
    connection_->CommitTrans();
    connection_->Execute(u"DELETE FROM Clienti");
    connection_->RollbackTrans();
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT COUNT(*) FROM Clienti")), "Long 2");
    EXPECT_EQ(raisedBy([&] { connection_->RollbackTrans(); }), errors::kNoTransaction);
    EXPECT_EQ(raisedBy([&] { connection_->setAttributes(1); }), errors::kInvalidArgument);
}

TEST_F(ProviderPropertiesTest, AFieldTellsItsColumn) {
    const auto rows = all();
    const auto code = rows->Fields()->Item(u"Codice")->Properties();
    EXPECT_EQ(shown(code->Item(u"BASETABLENAME")->Value()), "String Clienti");
    EXPECT_EQ(shown(code->Item(u"BASECOLUMNNAME")->Value()), "String Codice");
    EXPECT_EQ(shown(code->Item(u"KEYCOLUMN")->Value()), "Boolean Vero");
    EXPECT_EQ(shown(code->Item(u"ISAUTOINCREMENT")->Value()), "Boolean Falso");
    code->Item(u"Optimize")->setValue(true);
    EXPECT_EQ(shown(rows->Fields()->Item(0)->Properties()->Item(u"OPTIMIZE")->Value()),
              "Boolean Vero");
    EXPECT_EQ(rows->Fields()->Item(0)->Status(), FieldStatusEnum::adFieldOK);
}

TEST_F(ProviderPropertiesTest, TheUpdateCriteriaSayWhatARowMustStillHold) {
    const auto change = [&](UpdateCriteriaEnum criteria, const char16_t* meanwhile) {
        const auto rows = make<Recordset>();
        rows->setCursorLocation(CursorLocationEnum::adUseClient);
        rows->Properties()->Item(u"Update Criteria")->setValue(static_cast<std::int32_t>(criteria));
        rows->Open(u"SELECT Codice, Nome, Sconto, AggID FROM Clienti WHERE Codice = 1",
                   Variant(connection_), CursorTypeEnum::adOpenStatic,
                   LockTypeEnum::adLockOptimistic);
        connection_->Execute(meanwhile);
        return raisedBy([&] { rows->Update(u"Nome", u"Neri"); });
    };
    using enum UpdateCriteriaEnum;
    EXPECT_EQ(change(adCriteriaKey, u"UPDATE Clienti SET Nome = 'A' WHERE Codice = 1"), 0);
    EXPECT_EQ(change(adCriteriaUpdCols, u"UPDATE Clienti SET Nome = 'B' WHERE Codice = 1"),
              errors::kConcurrency);
    EXPECT_EQ(change(adCriteriaUpdCols, u"UPDATE Clienti SET Sconto = 1 WHERE Codice = 1"), 0);
    EXPECT_EQ(change(adCriteriaAllCols, u"UPDATE Clienti SET Sconto = 2 WHERE Codice = 1"),
              errors::kConcurrency);
    EXPECT_EQ(change(adCriteriaTimeStamp, u"UPDATE Clienti SET Fido = 2 WHERE Codice = 1"),
              errors::kConcurrency);
    const auto property = all()->Properties()->Item(u"Update Criteria");
    EXPECT_EQ(shown(property->Value()), "Long 2");
    EXPECT_EQ(raisedBy([&] { property->setValue(4); }), errors::kInvalidArgument);
}

TEST_F(ProviderPropertiesTest, ACommandLearnsItsProceduresParameters) {
    connection_->Execute(
        u"CREATE PROCEDURE Somma @a int, @b decimal(9,2), @nome varchar(20), @r int OUTPUT AS "
        u"SET @r = @a + 1");
    const auto command = make<Command>();
    EXPECT_EQ(raisedBy([&] { command->Parameters()->Refresh(); }), errors::kInvalidConnection);
    command->setActiveConnection(Variant(connection_));
    command->setCommandType(CommandTypeEnum::adCmdStoredProc);
    command->setCommandText(u"dbo.Somma");
    command->Parameters()->Refresh();
    const auto parameters = command->Parameters();
    ASSERT_EQ(parameters->Count(), 5);
    EXPECT_EQ(parameters->Item(0)->Direction(), ParameterDirectionEnum::adParamReturnValue);
    EXPECT_EQ(parameters->Item(u"@a")->Type(), DataTypeEnum::adInteger);
    EXPECT_EQ(parameters->Item(u"@b")->NumericScale(), 2);
    EXPECT_EQ(parameters->Item(u"@nome")->Size(), 20);
    EXPECT_EQ(parameters->Item(u"@r")->Direction(), ParameterDirectionEnum::adParamInputOutput);
    parameters->Item(u"@a")->setValue(41);
    parameters->Item(u"@b")->setValue(0);
    command->Execute();
    EXPECT_EQ(shown(parameters->Item(u"@r")->Value()), "Long 42");
    command->setCommandText(u"Manca");
    EXPECT_EQ(raisedBy([&] { parameters->Refresh(); }), errors::kCommandText);
    command->setCommandType(CommandTypeEnum::adCmdText);
    command->setCommandText(u"SELECT ?, '?', ? -- ?");
    parameters->Refresh();
    EXPECT_EQ(parameters->Count(), 2);
}

TEST_F(ProviderPropertiesTest, ACommandTakesItsTextFromAStream) {
    const auto stream = make<Stream>();
    stream->Open();
    stream->WriteText(u"SELECT Nome FROM Clienti WHERE Codice = 2");
    const auto command = make<Command>();
    command->setActiveConnection(Variant(connection_));
    EXPECT_FALSE(command->CommandStream().as<Ref<Object>>());
    command->setCommandStream(Variant(stream));
    EXPECT_EQ(shown(fieldOf(command->Execute(), 0)), "String Bianchi");
    command->setCommandText(u"SELECT 1");
    EXPECT_FALSE(command->CommandStream().as<Ref<Object>>());
    EXPECT_EQ(raisedBy([&] { command->setCommandStream(u"SELECT 1"); }), errors::kInvalidArgument);
    command->Properties()->Item(u"Command Time Out")->setValue(5);
    EXPECT_EQ(command->CommandTimeout(), 5);
}

TEST_F(ProviderPropertiesTest, CollectIsAFieldsValue) {
    const auto rows = all();
    EXPECT_EQ(shown(rows->Collect(u"Nome")), "String Rossi");
    rows->setCollect(1, u"Neri");
    EXPECT_EQ(shown(fieldOf(rows, u"Nome")), "String Neri");
    EXPECT_EQ(raisedBy([&] { (void)rows->Collect(99); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { (void)make<Recordset>()->Collect(0); }), errors::kObjectClosed);
}

TEST_F(ProviderPropertiesTest, WhatNoDriverHasIsRefusedByName) {
    const auto rows = all();
    EXPECT_EQ(rows->Index(), String());
    EXPECT_EQ(raisedBy([&] { rows->setIndex(u"PK"); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { rows->Seek(1); }), errors::kFeatureNotAvailable);
    EXPECT_FALSE(rows->Supports(CursorOptionEnum::adIndex));
    EXPECT_FALSE(rows->Supports(CursorOptionEnum::adSeek));
    EXPECT_EQ(raisedBy([&] { rows->setDataMember(u"x"); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { rows->setDataSource(Variant(rows)); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { rows->Fields()->Update(); }), errors::kFeatureNotAvailable);
    EXPECT_TRUE(rows->StayInSync());
}

TEST_F(ProviderPropertiesTest, AParameterTakesALongTextInPieces) {
    const auto command = make<Command>();
    const auto parameter = command->CreateParameter(u"p", DataTypeEnum::adLongVarWChar);
    EXPECT_EQ(parameter->Attributes(), 16);
    parameter->AppendChunk(u"uno ");
    parameter->AppendChunk(u"due");
    EXPECT_EQ(shown(parameter->Value()), "String uno due");
    parameter->setValue(u"x");
    parameter->AppendChunk(u"y");
    EXPECT_EQ(shown(parameter->Value()), "String y");
    const auto number = command->CreateParameter(u"n", DataTypeEnum::adInteger);
    EXPECT_EQ(raisedBy([&] { number->AppendChunk(u"1"); }), errors::kIllegalOperation);
    EXPECT_EQ(number->Properties()->Count(), 0);
}

}  // namespace
}  // namespace kap::ado
