#include <gtest/gtest.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
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

ServerMessage error(std::int32_t native, std::int32_t number, const char* text) {
    return {native, number, "42000", text, 3};
}

ServerMessage printedMessage(const char* text) {
    return {0, 77, "01000", text, 1, 0};
}

class FakeConnectionTest : public ::testing::Test {
protected:
    FakeConnectionTest() : connection_(test::open("Provider=Fake")) {}

    [[nodiscard]] std::string errors() const {
        std::string all;
        for (const Variant& element : connection_->Errors()->elements()) {
            const auto* each = dynamic_cast<const Error*>(element.as<Ref<Object>>().get());
            all += shown(Variant(each->Number())) + " " + each->Description().utf8() + "|";
        }
        return all;
    }

    test::FakeDriver driver_;
    Ref<Connection> connection_;
};

TEST_F(FakeConnectionTest, WhatASuccessfulScriptPrintsIsAmongTheErrors) {
    driver_.database.answers.push_back(
        {{}, {test::oneNumber(1)}, {printedMessage("uno"), printedMessage("due")}, {}});
    const auto rows = connection_->Execute(u"PRINT 'uno'");
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    EXPECT_EQ(errors(), "Long 0 uno|Long 0 due|");
    EXPECT_EQ(connection_->Errors()->Item(0)->SQLState(), String(u"01000"));
}

TEST_F(FakeConnectionTest, TheFirstErrorIsRaisedAndEveryMessageKept) {
    driver_.database.answers.push_back(
        {error(3621, errors::kCommandText, "terzo"),
         {},
         {printedMessage("primo"), error(2627, errors::kIntegrity, "secondo")},
         {}});
    try {
        connection_->Execute(u"x");
        FAIL() << "no error was raised";
    } catch (const AutomationError& raised) {
        EXPECT_EQ(raised.number(), errors::kIntegrity);
        EXPECT_EQ(raised.description(), String(u"secondo"));
    }
    EXPECT_EQ(errors(), "Long 0 primo|Long -2147217873 secondo|Long -2147217900 terzo|");
    EXPECT_EQ(connection_->Errors()->Item(1)->NativeError(), 2627);
    EXPECT_EQ(connection_->Errors()->Item(1)->Source(), String(u"FakeSource"));
    EXPECT_EQ(connection_->Errors()->Item(1)->line(), 3);
}

TEST_F(FakeConnectionTest, ErrorsStayUntilSomethingElseIsReported) {
    driver_.database.fail(errors::kTimeout, "lento");
    driver_.database.answer({});
    EXPECT_EQ(raisedBy([&] { return connection_->Execute(u"x"); }), errors::kTimeout);
    connection_->Execute(u"y");
    EXPECT_EQ(errors(), "Long -2147217871 lento|");
}

TEST_F(FakeConnectionTest, AScriptIsGivenTheConnectionsTimeLimit) {
    driver_.database.answer({});
    connection_->Execute(u"x");
    EXPECT_EQ(driver_.database.requests.back().timeout.count(), 30);
    connection_->setCommandTimeout(5);
    connection_->Execute(u"x");
    EXPECT_EQ(driver_.database.requests.back().timeout.count(), 5);
    const auto rows = make<Recordset>();
    rows->Open(u"x", Variant(connection_));
    EXPECT_EQ(driver_.database.requests.back().timeout.count(), 5);
    std::vector<Ref<Recordset>> answers;
    connection_->executeAll(u"x", answers);
    EXPECT_EQ(driver_.database.requests.back().timeout.count(), 0);
    EXPECT_EQ(raisedBy([&] { connection_->setCommandTimeout(-1); }), errors::kInvalidArgument);
}

TEST_F(FakeConnectionTest, RunsATableOrAProcedureByName) {
    driver_.database.answer({});
    connection_->Execute(u"Clienti", Variant(), 2);
    EXPECT_EQ(driver_.database.requests.back().text, "SELECT * FROM [Clienti]");
    connection_->Execute(u"Chiudi", Variant(), 4 | 128);
    EXPECT_TRUE(driver_.database.requests.back().procedure);
    EXPECT_EQ(raisedBy([&] { return connection_->Execute(u"x", Variant(), 3); }),
              errors::kInvalidArgument);
}

TEST_F(FakeConnectionTest, ASchemaIsAskedWithItsRestrictions) {
    const auto rows = connection_->OpenSchema(
        SchemaEnum::adSchemaColumns, Array::ofVariants({Variant(), Variant(), u"Clienti"}));
    EXPECT_EQ(shown(fieldOf(rows, u"TABLE_NAME")), "String Clienti");
    EXPECT_EQ(shown(fieldOf(rows, u"COLUMN_NAME")), "String Codice");
    EXPECT_EQ(rows->RecordCount(), 1);
    ASSERT_EQ(driver_.database.schemasAsked.size(), 1U);
    const SchemaRestrictions expected = {std::nullopt, std::nullopt, "Clienti", std::nullopt};
    EXPECT_EQ(driver_.database.schemasAsked[0].second, expected);
    rows->setActiveConnection(Variant(Ref<Object>()));
    connection_->Close();
    EXPECT_EQ(shown(fieldOf(rows, u"COLUMN_NAME")), "String Codice");
}

TEST_F(FakeConnectionTest, RefusesSchemasAndRestrictionsThatDoNotExist) {
    EXPECT_EQ(raisedBy([&] { return connection_->OpenSchema(SchemaEnum{99}); }),
              errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] {
                  return connection_->OpenSchema(SchemaEnum::adSchemaPrimaryKeys,
                                                 Array::ofVariants({u"a", u"b", u"c", u"d"}));
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(
        raisedBy([&] { return connection_->OpenSchema(SchemaEnum::adSchemaTables, u"Clienti"); }),
        errors::kInvalidArgument);
    connection_->Close();
    EXPECT_EQ(raisedBy([&] { return connection_->OpenSchema(SchemaEnum::adSchemaTables); }),
              errors::kObjectClosed);
}

TEST_F(FakeConnectionTest, ErrorsAreEnumeratedLateBound) {
    driver_.database.fail(errors::kTimeout, "lento");
    EXPECT_EQ(raisedBy([&] { return connection_->Execute(u"x"); }), errors::kTimeout);
    const Variant all = test::call(*connection_, u"Errors");
    const auto elements = all.as<Ref<Object>>()->elements();
    ASSERT_EQ(elements.size(), 1U);
    EXPECT_EQ(shown(test::call(*elements[0].as<Ref<Object>>(), u"Description")), "String lento");
}

TEST(ConnectionProperties, TheProviderMayBeSaidApart) {
    const test::FakeDriver driver;
    const auto connection = make<Connection>();
    EXPECT_EQ(connection->Provider(), String(u"MSDASQL"));
    connection->setProvider(u"Fake");
    EXPECT_EQ(connection->Provider(), String(u"Fake"));
    connection->Open(u"Data Source=x");
    EXPECT_EQ(driver.database.opened, 1);
    EXPECT_EQ(raisedBy([&] { connection->setProvider(u"Altro"); }), errors::kObjectOpen);
    connection->Close();
    connection->setConnectionString(u"Provider=KapLocal;Data Source=:memory:");
    EXPECT_EQ(connection->Provider(), String(u"KapLocal"));
}

TEST(ConnectionProperties, ReadModeOpensForReadingOnly) {
    const test::TemporaryFolder folder;
    const auto writer = test::open(folder.database());
    writer->Execute(u"CREATE TABLE T (A int)");
    const auto reader = make<Connection>();
    reader->setMode(ConnectModeEnum::adModeRead);
    reader->Open(folder.database());
    EXPECT_NE(raisedBy([&] { return reader->Execute(u"INSERT INTO T VALUES (1)"); }), 0);
    EXPECT_EQ(raisedBy([&] { reader->setMode(ConnectModeEnum::adModeReadWrite); }),
              errors::kObjectOpen);
}

TEST(ConnectionProperties, TheirDefaultsAreTheUsualOnes) {
    const auto connection = make<Connection>();
    EXPECT_EQ(connection->CommandTimeout(), 30);
    EXPECT_EQ(connection->ConnectionTimeout(), 15);
    EXPECT_EQ(connection->Mode(), ConnectModeEnum::adModeUnknown);
    EXPECT_EQ(connection->IsolationLevel(), IsolationLevelEnum::adXactReadCommitted);
    EXPECT_EQ(connection->Version(), String(u"2.8"));
    EXPECT_EQ(connection->DefaultDatabase(), String());
    EXPECT_EQ(connection->CursorLocation(), CursorLocationEnum::adUseServer);
}

TEST(ConnectionProperties, KeepsLevelsThatExist) {
    const auto connection = make<Connection>();
    connection->setIsolationLevel(IsolationLevelEnum::adXactSerializable);
    EXPECT_EQ(connection->IsolationLevel(), IsolationLevelEnum::adXactSerializable);
    EXPECT_EQ(raisedBy([&] { connection->setIsolationLevel(IsolationLevelEnum{3}); }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { connection->setMode(ConnectModeEnum{-1}); }),
              errors::kInvalidArgument);
    connection->setConnectionTimeout(60);
    EXPECT_EQ(connection->ConnectionTimeout(), 60);
}

TEST(ConnectionProperties, TheDatabaseIsTheOneNamedOrChangedTo) {
    test::FakeDriver driver;
    driver.database.answer({});
    const auto connection = test::open("Provider=Fake;Initial Catalog=azienda");
    EXPECT_EQ(connection->DefaultDatabase(), String(u"azienda"));
    connection->setDefaultDatabase(u"a]b");
    EXPECT_EQ(driver.database.scripts.back(), "USE [a]]b]");
    EXPECT_EQ(connection->DefaultDatabase(), String(u"a]b"));
}

TEST(ConnectionPassword, IsNotShownOnceTheConnectionHasBeenOpened) {
    test::FakeDriver driver;
    const auto connection = make<Connection>();
    connection->setConnectionString(u"Provider=Fake;User ID=sa;Password=geheim");
    EXPECT_EQ(connection->ConnectionString(), u"Provider=Fake;User ID=sa;Password=geheim");
    connection->Open();
    EXPECT_EQ(connection->ConnectionString(), u"Provider=Fake;User ID=sa;");
    connection->Close();
    EXPECT_EQ(connection->ConnectionString(), u"Provider=Fake;User ID=sa;");
}

TEST(ConnectionPassword, IsShownWhereTheStringSaysSo) {
    test::FakeDriver driver;
    const String text = u"Provider=Fake;Password=geheim;Persist Security Info=True";
    EXPECT_EQ(test::open(text.utf8())->ConnectionString(), text);
}

TEST(ConnectionPassword, ServesToOpenAgainAndToOpenAnother) {
    test::FakeDriver driver;
    const auto passwords = [&] {
        std::string all;
        for (const auto& keys : driver.database.keys) {
            all +=
                keys.find("User ID").value_or("") + ":" + keys.find("Password").value_or("") + " ";
        }
        return all;
    };
    const auto connection = make<Connection>();
    connection->Open(u"Provider=Fake", u"sa", u"geheim");
    EXPECT_EQ(connection->ConnectionString(), u"Provider=Fake");
    connection->Close();
    connection->Open();
    const auto other = connection->openAnother();
    EXPECT_EQ(other->State(), ObjectStateEnum::adStateOpen);
    EXPECT_EQ(other->ConnectionString().utf8().find("geheim"), std::string::npos);
    EXPECT_EQ(passwords(), "sa:geheim sa:geheim sa:geheim ");
    connection->Close();
    connection->setConnectionString(connection->ConnectionString());
    connection->Open();
    EXPECT_EQ(passwords(), "sa:geheim sa:geheim sa:geheim : ");
}

}  // namespace
}  // namespace kap::ado
