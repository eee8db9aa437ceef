#include <kaputil/ado/connection.hpp>

#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::openMemory;
using test::raisedBy;
using test::shown;
using test::valueOf;

TEST(Connection, IsClosedUntilItIsOpened) {
    auto connection = make<Connection>();
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(raisedBy([&] {
                  connection->Close();
                  return 0;
              }),
              errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { return connection->Execute(u"SELECT 1"); }), errors::kObjectClosed);
    connection->setConnectionString(test::memoryDatabase());
    connection->Open();
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateOpen);
    connection->Close();
    EXPECT_EQ(connection->State(), ObjectStateEnum::adStateClosed);
}

TEST(Connection, RefusesToOpenTwiceAndToChangeItsStringWhileOpen) {
    const auto connection = openMemory();
    EXPECT_EQ(raisedBy([&] {
                  connection->Open();
                  return 0;
              }),
              errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] {
                  connection->setConnectionString(u"");
                  return 0;
              }),
              errors::kObjectOpen);
}

TEST(Connection, RefusesAnUnknownProvider) {
    const auto connection = make<Connection>();
    try {
        connection->Open(u"Provider=Sconosciuto;Data Source=x");
        FAIL() << "an unknown provider was accepted";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kProviderNotFound);
        EXPECT_NE(error.description().utf8().find("'Sconosciuto'"), std::string::npos);
    }
}

TEST(Connection, CountsTheRowsThatAScriptWrote) {
    const auto connection = openMemory();
    Variant rows;
    connection->Execute(u"CREATE TABLE T (A int)", rows);
    EXPECT_EQ(shown(rows), "Long -1");
    connection->Execute(u"INSERT INTO T VALUES (1), (2); INSERT INTO T VALUES (3)", rows);
    EXPECT_EQ(shown(rows), "Long 3");
    EXPECT_EQ(connection->Execute(u"DELETE FROM T")->State(), ObjectStateEnum::adStateClosed);
}

TEST(Connection, GivesEveryAnswerOfAScriptInOrder) {
    const auto connection = openMemory();
    std::vector<Ref<Recordset>> answers;
    connection->executeAll(
        u"CREATE TABLE T (A int); INSERT INTO T VALUES (1), (2); SELECT A FROM T; SELECT 'x'",
        answers);
    ASSERT_EQ(answers.size(), 3U);
    EXPECT_EQ(answers[0]->rowsAffected(), 2);
    EXPECT_EQ(answers[1]->RecordCount(), 2);
    EXPECT_EQ(shown(test::fieldOf(answers[2], 0)), "String x");
}

TEST(Connection, GivesTheAnswersBeforeAFailure) {
    const auto connection = openMemory();
    std::vector<Ref<Recordset>> answers;
    EXPECT_EQ(raisedBy([&] {
                  connection->executeAll(u"SELECT 1; SELECT 2; SELECT * FROM Manca", answers);
                  return 0;
              }),
              errors::kUnknownObject);
    EXPECT_EQ(answers.size(), 2U);
}

TEST(Connection, KeepsTheErrorsOfAFailedScript) {
    const auto connection = openMemory();
    const auto rows = connection->Execute(u"SELECT 1\nSELECT * FROM Manca");
    EXPECT_EQ(raisedBy([&] { return rows->NextRecordset(); }), errors::kUnknownObject);
    ASSERT_EQ(connection->Errors()->Count(), 1);
    const auto error = connection->Errors()->Item(0);
    EXPECT_EQ(error->Number(), errors::kUnknownObject);
    EXPECT_EQ(error->NativeError(), 208);
    EXPECT_EQ(error->Description(), String(u"Invalid object name 'Manca'."));
    EXPECT_EQ(error->SQLState(), String(u"42S02"));
    EXPECT_EQ(error->line(), 2);
    connection->Errors()->Clear();
    EXPECT_EQ(connection->Errors()->Count(), 0);
    EXPECT_EQ(raisedBy([&] { return connection->Errors()->Item(0); }), errors::kItemNotFound);
}

TEST(Connection, RaisesTheServersWordsForAnErrorInTheText) {
    const auto connection = openMemory();
    try {
        connection->Execute(u"SELECT * FRM Clienti");
        FAIL() << "a text that is no statement was accepted";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kCommandText);
        EXPECT_EQ(error.description(), String(u"Incorrect syntax near 'FRM'."));
    }
}

TEST(Connection, UndoesATransaction) {
    const auto connection = openMemory();
    connection->Execute(u"CREATE TABLE T (A int)");
    EXPECT_EQ(connection->BeginTrans(), 1);
    connection->Execute(u"INSERT INTO T VALUES (1)");
    connection->RollbackTrans();
    EXPECT_EQ(shown(valueOf(connection, u"SELECT COUNT(*) FROM T")), "Long 0");
    connection->BeginTrans();
    connection->Execute(u"INSERT INTO T VALUES (1)");
    connection->CommitTrans();
    EXPECT_EQ(shown(valueOf(connection, u"SELECT COUNT(*) FROM T")), "Long 1");
}

TEST(Connection, EndsWithItsOpenTransactionUndone) {
    const test::TemporaryFolder folder;
    auto connection = test::open(folder.database());
    connection->Execute(u"CREATE TABLE T (A int)");
    connection->BeginTrans();
    connection->Execute(u"INSERT INTO T VALUES (1)");
    connection = test::open(folder.database());
    EXPECT_EQ(shown(valueOf(connection, u"SELECT COUNT(*) FROM T")), "Long 0");
}

}  // namespace
}  // namespace kap::ado
