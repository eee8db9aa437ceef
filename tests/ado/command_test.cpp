#include <kaputil/ado/command.hpp>

#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/fake_driver.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;
using enum ParameterDirectionEnum;

ServerMessage serverError(std::int32_t native, const char* text) {
    return {native, errors::kCommandText, "42000", text, 1};
}

ServerMessage printed(const char* text) {
    return {0, 0, "01000", text, 1, 0};
}

// A command on a database that remembers what it is asked.
class CommandTest : public ::testing::Test {
protected:
    CommandTest() : connection_(test::open("Provider=Fake")), command_(make<Command>()) {
        command_->setActiveConnection(Variant(connection_));
        command_->setCommandText(u"EXEC Chiusura");
        driver_.database.answer({});
    }

    void append(const char16_t* name, DataTypeEnum type, ParameterDirectionEnum direction,
                std::int32_t size, const Variant& value = Variant::missing()) {
        command_->Parameters()->Append(
            command_->CreateParameter(name, type, direction, size, value));
    }
    [[nodiscard]] const Request& asked() const { return driver_.database.requests.back(); }
    [[nodiscard]] const RequestParameter& askedWith(std::size_t index) const {
        return asked().parameters.at(index);
    }

    LocaleScope locale_{"it-IT"};
    test::FakeDriver driver_;
    Ref<Connection> connection_;
    Ref<Command> command_;
};

TEST_F(CommandTest, SendsItsTextWithItsTimeLimit) {
    command_->setCommandText(u"UPDATE Clienti SET Fido = 0");
    EXPECT_EQ(command_->CommandTimeout(), 30);
    command_->Execute();
    EXPECT_EQ(asked().text, "UPDATE Clienti SET Fido = 0");
    EXPECT_FALSE(asked().procedure);
    EXPECT_EQ(asked().timeout.count(), 30);
    command_->setCommandTimeout(0);
    command_->Execute();
    EXPECT_EQ(asked().timeout.count(), 0);
    EXPECT_EQ(raisedBy([&] { command_->setCommandTimeout(-1); }), errors::kInvalidArgument);
}

TEST_F(CommandTest, SendsATableOrAProcedureByName) {
    command_->setCommandText(u"Nomi]strani");
    command_->setCommandType(CommandTypeEnum::adCmdTable);
    command_->Execute();
    EXPECT_EQ(asked().text, "SELECT * FROM [Nomi]]strani]");
    command_->setCommandType(CommandTypeEnum::adCmdStoredProc);
    command_->Execute();
    EXPECT_EQ(asked().text, "Nomi]strani");
    EXPECT_TRUE(asked().procedure);
    command_->Execute(Variant(), Variant::missing(), 1);  // as a text, this once
    EXPECT_FALSE(asked().procedure);
    EXPECT_EQ(raisedBy([&] { command_->setCommandType(CommandTypeEnum{3}); }),
              errors::kInvalidArgument);
}

TEST_F(CommandTest, SendsItsParametersInTheirTypes) {
    using enum DataTypeEnum;
    command_->setCommandText(u"SELECT ?, ?, ?, ?, ?");
    append(u"Codice", adInteger, adParamInput, 0, u"12");
    append(u"Nome", adVarChar, adParamInput, 30, u"Rossi");
    append(u"Dal", adDBTimeStamp, adParamInput, 0, u"31/12/2003");
    append(u"Sconto", adNumeric, adParamInput, 0, u"10,25");
    append(u"Note", adVarChar, adParamInput, 5, Variant::null());
    command_->Execute();
    ASSERT_EQ(asked().parameters.size(), 5U);
    EXPECT_EQ(askedWith(0).type, adInteger);
    EXPECT_EQ(askedWith(0).value, Value{std::int64_t{12}});
    EXPECT_EQ(askedWith(0).name, "");
    EXPECT_EQ(askedWith(1).size, 30);
    EXPECT_EQ(askedWith(1).value, Value{"Rossi"});
    EXPECT_EQ(askedWith(2).value, Value{37986.0});
    EXPECT_EQ(askedWith(3).value, Value{std::int64_t{1025}});
    EXPECT_EQ(askedWith(3).numericScale, 2);
    EXPECT_EQ(askedWith(4).value, Value{});
}

TEST_F(CommandTest, ValuesGivenWithTheCallReplaceThoseOfInputParameters) {
    using enum DataTypeEnum;
    append(u"A", adInteger, adParamInput, 0, 1);
    append(u"B", adInteger, adParamOutput, 0);
    append(u"C", adInteger, adParamInputOutput, 0, 3);
    command_->Execute(Variant(), Array::ofVariants({Variant(), u"33"}));
    EXPECT_EQ(askedWith(0).value, Value{std::int64_t{1}});
    EXPECT_EQ(askedWith(1).value, Value{});
    EXPECT_EQ(askedWith(2).value, Value{std::int64_t{33}});
    command_->Execute(Variant(), 7);
    EXPECT_EQ(askedWith(0).value, Value{std::int64_t{7}});
    EXPECT_EQ(raisedBy([&] {
                  command_->Execute(Variant(), Array::ofVariants({1, 2, 3}));
              }),
              errors::kInvalidArgument);
}

TEST_F(CommandTest, WithoutParametersTheValuesSayTheTypes) {
    using enum DataTypeEnum;
    command_->Execute(Variant(), Array::ofVariants({u"x", 5, std::int16_t{4}, 2.5, Currency{15000},
                                                    true, Date{2.0}, Variant::null(),
                                                    Array::ofBytes({1, 2}), Decimal(125, 2)}));
    ASSERT_EQ(asked().parameters.size(), 10U);
    const DataTypeEnum expected[] = {adVarWChar, adInteger,     adSmallInt, adDouble,    adCurrency,
                                     adBoolean,  adDBTimeStamp, adVarWChar, adVarBinary, adNumeric};
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(askedWith(i).type, expected[i]) << i;
    }
    EXPECT_EQ(askedWith(4).value, Value{std::int64_t{15000}});
    EXPECT_EQ(askedWith(5).value, Value{std::int64_t{1}});
    EXPECT_EQ(askedWith(7).value, Value{});
    EXPECT_EQ(askedWith(9).value, Value{std::int64_t{125}});
    EXPECT_EQ(askedWith(9).numericScale, 2);
}

TEST_F(CommandTest, TakesBackWhatTheDatabaseWrote) {
    using enum DataTypeEnum;
    driver_.database.answers.clear();
    driver_.database.answers.push_back(
        {{}, {}, {}, {Value{std::int64_t{5}}, Value{"fatto"}, Value{}}});
    append(u"RETURN_VALUE", adInteger, adParamReturnValue, 0);
    append(u"Codice", adInteger, adParamInput, 0, 12);
    append(u"Esito", adVarChar, adParamOutput, 20);
    append(u"Resto", adInteger, adParamInputOutput, 0, 1);
    command_->Execute();
    const auto parameters = command_->Parameters();
    EXPECT_EQ(shown(parameters->Item(0)->Value()), "Long 5");
    EXPECT_EQ(shown(parameters->Item(u"codice")->Value()), "Long 12");
    EXPECT_EQ(shown(parameters->Item(u"Esito")->Value()), "String fatto");
    EXPECT_EQ(shown(parameters->Item(u"Resto")->Value()), "Null");
}

TEST_F(CommandTest, NamesGoAlongWhenTheyCount) {
    append(u"Codice", DataTypeEnum::adInteger, adParamInput, 0, 1);
    append(u"@Anno", DataTypeEnum::adInteger, adParamInput, 0, 2);
    command_->setNamedParameters(true);
    command_->Execute();
    EXPECT_EQ(askedWith(0).name, "@Codice");
    EXPECT_EQ(askedWith(1).name, "@Anno");
}

TEST_F(CommandTest, GivesTheRowsAndTheCount) {
    driver_.database.answers.clear();
    Result written;
    written.rowsAffected = 4;
    driver_.database.answer({written, test::oneNumber(7)});
    Variant count;
    const auto rows = command_->Execute(count);
    EXPECT_EQ(shown(count), "Long 4");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 7");
    EXPECT_EQ(rows->LockType(), LockTypeEnum::adLockReadOnly);
    const auto none = command_->Execute(count, Variant::missing(), 128);
    EXPECT_EQ(none->State(), ObjectStateEnum::adStateClosed);
}

TEST_F(CommandTest, ARecordsetOpensACommandWithItsOwnCursor) {
    driver_.database.answers.clear();
    driver_.database.answer({test::oneNumber(7)});
    command_->setCommandText(u"SELECT N");
    command_->setCommandTimeout(5);
    append(u"A", DataTypeEnum::adInteger, adParamInput, 0, 1);
    const auto rows = make<Recordset>();
    rows->Open(Variant(command_), Variant::missing(), CursorTypeEnum::adOpenKeyset,
               LockTypeEnum::adLockOptimistic);
    EXPECT_EQ(rows->CursorType(), CursorTypeEnum::adOpenKeyset);
    EXPECT_EQ(asked().parameters.size(), 1U);
    EXPECT_EQ(asked().timeout.count(), 5);
    EXPECT_EQ(shown(rows->Source()), "String SELECT N");
    EXPECT_EQ(rows->ActiveCommand().as<Ref<Object>>(), Ref<Object>(command_));
    EXPECT_EQ(rows->ActiveConnection().as<Ref<Object>>(), Ref<Object>(connection_));
    rows->Requery();
    EXPECT_EQ(driver_.database.requests.size(), 2U);
    rows->Close();
    EXPECT_EQ(raisedBy([&] { rows->Open(Variant(command_), Variant(connection_)); }),
              errors::kConnectionOfCommand);
}

TEST_F(CommandTest, NeedsAnOpenConnection) {
    const auto command = make<Command>();
    EXPECT_EQ(raisedBy([&] { return command->Execute(); }), errors::kInvalidConnection);
    EXPECT_EQ(raisedBy([&] { command->setActiveConnection(Variant(make<Connection>())); }),
              errors::kInvalidConnection);
    EXPECT_EQ(raisedBy([&] { command->setActiveConnection(Variant(make<Command>())); }),
              errors::kInvalidArgument);
    command->setActiveConnection(u"Provider=Fake");
    EXPECT_EQ(raisedBy([&] { return command->Execute(); }), errors::kNoCommandText);
    command->setCommandText(u"EXEC Chiusura");
    command->Execute();
    EXPECT_TRUE(command->ActiveConnection().as<Ref<Object>>());
    connection_->Close();
    EXPECT_EQ(raisedBy([&] { return command_->Execute(); }), errors::kInvalidConnection);
}

TEST_F(CommandTest, AFailureIsKeptWithTheConnectionsErrors) {
    driver_.database.answers.clear();
    driver_.database.answers.push_back(
        {serverError(50000, "Esaurito"), {}, {printed("prima")}, {}});
    EXPECT_EQ(raisedBy([&] { return command_->Execute(); }), errors::kCommandText);
    ASSERT_EQ(connection_->Errors()->Count(), 2);
    EXPECT_EQ(connection_->Errors()->Item(0)->Description(), String(u"prima"));
    EXPECT_EQ(connection_->Errors()->Item(0)->Number(), 0);
    EXPECT_EQ(connection_->Errors()->Item(1)->NativeError(), 50000);
}

TEST_F(CommandTest, KeepsItsProperties) {
    command_->setName(u"Aggiorna");
    command_->setPrepared(true);
    EXPECT_EQ(command_->Name(), String(u"Aggiorna"));
    EXPECT_TRUE(command_->Prepared());
    EXPECT_EQ(command_->State(), ObjectStateEnum::adStateClosed);
    command_->Cancel();
    EXPECT_EQ(command_->CommandType(), CommandTypeEnum::adCmdUnknown);
}

TEST_F(CommandTest, WorksByLateBoundCalls) {
    driver_.database.answers.clear();
    driver_.database.answer({test::oneNumber(7)});
    test::invoke(*command_, u"CommandText", InvokeKind::Let, {u"SELECT ?"});
    const Variant made = test::callNamed(*command_, u"CreateParameter",
                                         {{u"Name", u"A"}, {u"Type", 3}, {u"Value", u"12"}});
    const Variant parameters = test::call(*command_, u"Parameters");
    test::call(*parameters.as<Ref<Object>>(), u"Append", {made});
    const Variant rows = test::call(*command_, u"Execute");
    EXPECT_EQ(askedWith(0).value, Value{std::int64_t{12}});
    EXPECT_TRUE(rows.isObject());
    EXPECT_EQ(parameters.as<Ref<Object>>()->elements().size(), 1U);
}

TEST(EmbeddedCommand, RunsTextsAndTables) {
    const auto connection = test::openMemory();
    const auto command = make<Command>();
    command->setActiveConnection(Variant(connection));
    command->setCommandText(u"CREATE TABLE T (A int); INSERT INTO T VALUES (1), (2)");
    Variant written;
    EXPECT_EQ(command->Execute(written)->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(shown(written), "Long 2");
    command->setCommandText(u"T");
    command->setCommandType(CommandTypeEnum::adCmdTable);
    EXPECT_EQ(shown(fieldOf(command->Execute(), 0)), "Long 1");
    command->setCommandText(u"SELECT * FROM Manca");
    command->setCommandType(CommandTypeEnum::adCmdText);
    EXPECT_EQ(raisedBy([&] { return command->Execute(); }), errors::kUnknownObject);
    EXPECT_EQ(connection->Errors()->Item(0)->NativeError(), 208);
}

TEST(Parameter, ConvertsItsValueToItsType) {
    const LocaleScope locale("it-IT");
    const auto parameter = make<Parameter>();
    parameter->setValue(u"12,5");
    EXPECT_EQ(shown(parameter->Value()), "String 12,5");
    parameter->setType(DataTypeEnum::adCurrency);
    parameter->setValue(u"12,5");
    EXPECT_EQ(shown(parameter->Value()), "Currency 12,5");
    parameter->setValue(Variant::null());
    EXPECT_EQ(shown(parameter->Value()), "Null");
    EXPECT_EQ(raisedBy([&] { parameter->setValue(u"abc"); }), errors::kWrongValueType);
}

TEST(Parameter, RefusesValuesThatDoNotFit) {
    const auto parameter = make<Parameter>();
    parameter->setType(DataTypeEnum::adVarChar);
    parameter->setSize(3);
    EXPECT_EQ(raisedBy([&] { parameter->setValue(u"abcd"); }), errors::kMultipleStep);
    parameter->setType(DataTypeEnum::adSmallInt);
    EXPECT_EQ(raisedBy([&] { parameter->setValue(40000); }), errors::kMultipleStep);
    parameter->setType(DataTypeEnum::adDecimal);
    parameter->setPrecision(5);
    parameter->setNumericScale(2);
    parameter->setValue(1.005);
    EXPECT_EQ(parameter->Value().as<Decimal>().plainText(), "1");
    EXPECT_EQ(raisedBy([&] { parameter->setValue(1000); }), errors::kMultipleStep);
}

TEST(Parameter, RefusesWhatDoesNotExist) {
    const auto parameter = make<Parameter>();
    EXPECT_EQ(raisedBy([&] { parameter->setType(DataTypeEnum{999}); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { parameter->setSize(-2); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { parameter->setDirection(ParameterDirectionEnum{5}); }),
              errors::kInvalidArgument);
}

TEST(Parameters, AreAppendedFoundAndDeleted) {
    const auto command = make<Command>();
    const auto parameters = command->Parameters();
    parameters->Append(command->CreateParameter(u"A", DataTypeEnum::adInteger));
    parameters->Append(command->CreateParameter(u"B", DataTypeEnum::adInteger));
    EXPECT_EQ(parameters->Count(), 2);
    EXPECT_EQ(parameters->Item(u"b")->Name(), String(u"B"));
    parameters->Delete(u"A");
    EXPECT_EQ(parameters->Item(0)->Name(), String(u"B"));
    EXPECT_EQ(raisedBy([&] { return parameters->Item(u"A"); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { return parameters->Item(1); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { parameters->Append(command->CreateParameter(u"C")); }),
              errors::kIncompleteParameter);
    EXPECT_EQ(raisedBy([&] { parameters->Append({}); }), errors::kIncompleteParameter);
    EXPECT_EQ(raisedBy([&] { parameters->Refresh(); }), errors::kInvalidConnection);
}

}  // namespace
}  // namespace kap::ado
