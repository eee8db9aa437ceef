#include <kaputil/sqlscript/csql.hpp>

#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/database.hpp"
#include "support/late_bound.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::raisedBy;
using test::shown;

constexpr auto kOpen = ado::ObjectStateEnum::adStateOpen;
constexpr auto kClosed = ado::ObjectStateEnum::adStateClosed;

TEST(Script, IsEmptyWhenItIsMade) {
    const auto sql = make<CSQL>();
    EXPECT_EQ(sql->SQLString(), u"");
    EXPECT_EQ(shown(sql->Parametri()->Leggi()), "String ");
    EXPECT_EQ(shown(sql->Errore()->ToString()),
              "String <ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1></ERR_MSG1>");
}

TEST(Script, AppendsAStatementWithTheDefaultMessage) {
    const auto sql = make<CSQL>();
    const String block = sql->Command(u"DELETE T WHERE Nome = 'x'");
    EXPECT_EQ(block,
              u"SET @ERRORE_DESC='KAP: Errore Esecuzione Command'\r\n"
              u"DELETE T WHERE Nome = 'x'\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
    EXPECT_EQ(sql->SQLString(), block);
}

TEST(Script, AppendsStatementsInTheOrderOfTheCallsWithTheirMessages) {
    const auto sql = make<CSQL>();
    sql->Command(u"UPDATE A SET N = 1", u"Prima fallita");
    EXPECT_EQ(sql->Command(u"", u" "),
              u"SET @ERRORE_DESC=' '\r\n"
              u"\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
    EXPECT_EQ(sql->SQLString(),
              u"SET @ERRORE_DESC='Prima fallita'\r\n"
              u"UPDATE A SET N = 1\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n"
              u"SET @ERRORE_DESC=' '\r\n"
              u"\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n");
}

TEST(Script, LeavesQuotesInMessagesAsTheyAre) {
    EXPECT_TRUE(make<CSQL>()
                    ->Command(u"SELECT 1", u"L'errore")
                    .view()
                    .starts_with(u"SET @ERRORE_DESC='L'errore'\r\n"));
}

TEST(Script, ForgetsEarlierMessagesWithEveryStatement) {
    const auto sql = make<CSQL>();
    sql->Errore()->setNumero(1);
    sql->Errore()->AddMessaggio(u"di prima");
    sql->Command(u"SELECT 1");
    EXPECT_EQ(shown(sql->Errore()->ToString()),
              "String <ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1></ERR_MSG1>");
}

TEST(Script, IsSentAsOneTransactionInOneText) {
    const auto sql = make<CSQL>();
    sql->Command(u"UPDATE T SET Nome = 'x'", u"No");
    EXPECT_EQ(sql->SQL_Execute(),
              u"sp_executesql N' DECLARE @ERRORE_NUMERO int \r\n"
              u" DECLARE @ERRORE_DESC varchar(100) \r\n"
              u" SET NOCOUNT ON \r\n"
              u" BEGIN TRANSACTION \r\n"
              u"SET @ERRORE_DESC=''No''\r\n"
              u"UPDATE T SET Nome = ''x''\r\n"
              u"SET @ERRORE_NUMERO=@@error\r\n"
              u"if (@ERRORE_NUMERO<>0) GOTO on_error\r\n"
              u"\r\n"
              u"\r\n"
              u"\r\n"
              u"COMMIT TRANSACTION\r\n"
              u"GOTO end_script\r\n"
              u"\r\n"
              u"on_error:\r\n"
              u"RAISERROR (@ERRORE_DESC,16,1)\r\n"
              u"ROLLBACK TRANSACTION\r\n"
              u"\r\n"
              u"end_script:\r\n"
              u" SET NOCOUNT OFF \r\n"
              u"'");
    EXPECT_EQ(sql->SQL_Execute(), sql->SQL_Execute());
}

TEST(Script, OpensAndCommitsAnEmptyTransactionWithoutStatements) {
    EXPECT_EQ(make<CSQL>()->SQL_Execute(),
              u"sp_executesql N' DECLARE @ERRORE_NUMERO int \r\n"
              u" DECLARE @ERRORE_DESC varchar(100) \r\n"
              u" SET NOCOUNT ON \r\n"
              u" BEGIN TRANSACTION \r\n"
              u"\r\n"
              u"\r\n"
              u"COMMIT TRANSACTION\r\n"
              u"GOTO end_script\r\n"
              u"\r\n"
              u"on_error:\r\n"
              u"RAISERROR (@ERRORE_DESC,16,1)\r\n"
              u"ROLLBACK TRANSACTION\r\n"
              u"\r\n"
              u"end_script:\r\n"
              u" SET NOCOUNT OFF \r\n"
              u"'");
}

TEST(Script, DoublesQuotesOnlyInWhatIsSent) {
    const auto sql = make<CSQL>();
    sql->setSQLString(u"''a'b'");
    EXPECT_NE(sql->SQL_Execute().view().find(u"BEGIN TRANSACTION \r\n''''a''b''\r\n\r\nCOMMIT"),
              std::u16string_view::npos);
    EXPECT_EQ(sql->SQLString(), u"''a'b'");
}

TEST(Script, HasAConnectionThatIsNotOpenWhenItIsGivenNone) {
    const auto sql = make<CSQL>();
    EXPECT_EQ(sql->ConnectionString(), u"");
    EXPECT_EQ(sql->ActiveConnection()->State(), kClosed);
    EXPECT_EQ(sql->ActiveConnection(), sql->ActiveConnection());
}

TEST(Script, ClosesTheConnectionThatItOpened) {
    const String database = test::memoryDatabase();
    auto sql = make<CSQL>();
    sql->setConnectionString(database);
    const auto connection = sql->ActiveConnection();
    EXPECT_EQ(connection->State(), kOpen);
    // Without a password, where there is one.
    EXPECT_EQ(sql->ConnectionString(), test::open(database.utf8())->ConnectionString());
    sql = nullptr;
    EXPECT_EQ(connection->State(), kClosed);
}

TEST(Script, LeavesTheClientsConnectionOpen) {
    const auto connection = test::openMemory();
    auto sql = make<CSQL>();
    sql->setActiveConnection(connection);
    EXPECT_EQ(sql->ActiveConnection(), connection);
    EXPECT_EQ(sql->ConnectionString(), connection->ConnectionString());
    sql = nullptr;
    EXPECT_EQ(connection->State(), kOpen);
}

TEST(Script, ReopensAndOwnsTheClientsConnectionOnANewString) {
    const auto connection = test::openMemory();
    const String other = test::memoryDatabase();
    auto sql = make<CSQL>();
    sql->setActiveConnection(connection);
    sql->setConnectionString(other);
    EXPECT_EQ(sql->ActiveConnection(), connection);
    EXPECT_EQ(connection->ConnectionString(), test::open(other.utf8())->ConnectionString());
    EXPECT_EQ(connection->State(), kOpen);
    sql = nullptr;
    EXPECT_EQ(connection->State(), kClosed);
}

TEST(Script, LetsGoOfItsOwnConnectionWithoutClosingItWhenGivenAnother) {
    auto sql = make<CSQL>();
    sql->setConnectionString(test::memoryDatabase());
    const auto own = sql->ActiveConnection();
    const auto given = test::openMemory();
    sql->setActiveConnection(given);
    sql = nullptr;
    EXPECT_EQ(own->State(), kOpen);
    EXPECT_EQ(given->State(), kOpen);
}

TEST(Script, EndsQuietlyWhenItsConnectionIsClosedAlready) {
    auto sql = make<CSQL>();
    sql->setConnectionString(test::memoryDatabase());
    const auto connection = sql->ActiveConnection();
    connection->Close();
    sql = nullptr;
    EXPECT_EQ(connection->State(), kClosed);
}

TEST(Script, RaisesTheErrorOfAStringThatCannotBeOpenedAndOwnsNothing) {
    const auto connection = test::openMemory();
    auto sql = make<CSQL>();
    sql->setActiveConnection(connection);
    EXPECT_EQ(raisedBy([&] {
                  sql->setConnectionString(u"Provider=Manca");
                  return 0;
              }),
              ado::errors::kProviderNotFound);
    EXPECT_EQ(connection->State(), kClosed);
    connection->Open(test::memoryDatabase());
    sql = nullptr;
    EXPECT_EQ(connection->State(), kOpen);
}

TEST(Script, MakesAnEmptyConnectionWhereItIsSetToNothing) {
    const auto sql = make<CSQL>();
    sql->setConnectionString(test::memoryDatabase());
    sql->setActiveConnection({});
    EXPECT_EQ(sql->ConnectionString(), u"");
}

TEST(Script, ForgetsEverythingButTheConnection) {
    const auto connection = test::openMemory();
    const auto sql = make<CSQL>();
    sql->setActiveConnection(connection);
    sql->Command(u"SELECT 1");
    sql->Parametri()->Scrivi(u"FROM", u"#T");
    sql->Errore()->AddMessaggio(u"x");
    const auto parameters = sql->Parametri();
    sql->Clear();
    EXPECT_EQ(sql->SQLString(), u"");
    EXPECT_EQ(sql->Parametri(), parameters);
    EXPECT_EQ(shown(parameters->Leggi()), "String ");
    EXPECT_EQ(shown(sql->Errore()->MsgToString()), "String ");
    EXPECT_EQ(sql->ActiveConnection(), connection);
}

TEST(Script, SharesTheObjectsOfItsFieldsWithTheClient) {
    const auto sql = make<CSQL>();
    const auto errore = make<CErrore>();
    const auto parameters = make<CProprieta>();
    sql->setErrore(errore);
    sql->setParametri(parameters);
    sql->AddTmp();
    EXPECT_EQ(shown(errore->Numero()), "String 1");
    EXPECT_EQ(shown(parameters->Leggi(u"DELETE_FROM")), "String NO");
}

TEST(Script, RaisesAnErrorWhereAnObjectWasSetToNothing) {
    const auto sql = make<CSQL>();
    sql->setParametri({});
    EXPECT_EQ(raisedBy([&] { return sql->AddTmp(); }), errors::kObjectNotSet);
    sql->setErrore({});
    EXPECT_EQ(raisedBy([&] { return sql->Command(u"SELECT 1"); }), errors::kObjectNotSet);
    EXPECT_EQ(raisedBy([&] { return sql->Execute(); }), errors::kObjectNotSet);
}

TEST(ScriptByName, TakesFieldsPropertiesAndDefaults) {
    const auto connection = test::openMemory();
    KAP_NEEDS_DIALECT(connection, "a script is one text of it");
    const auto sql = make<CSQL>();
    test::invoke(*sql, u"sqlstring", InvokeKind::Let, {u"-- prima\r\n"});
    test::invoke(*sql, u"ActiveConnection", InvokeKind::Set, {Variant(connection)});
    test::call(*sql, u"Command", {u"DECLARE @n int"});
    EXPECT_TRUE(sql->SQLString().view().starts_with(u"-- prima\r\nSET @ERRORE_DESC='KAP: "));
    EXPECT_EQ(test::call(*sql, u"Execute").as<bool>(), true);
    EXPECT_EQ(test::call(*sql, u"Errore").as<Ref<Object>>(), Ref<Object>(sql->Errore()));
}

TEST(ScriptByName, RefusesWhatIsNoConnection) {
    const auto sql = make<CSQL>();
    for (const Variant& wrong : {Variant(u"Provider=KapLocal"), Variant(make<CErrore>())}) {
        EXPECT_EQ(raisedBy([&] {
                      return test::invoke(*sql, u"ActiveConnection", InvokeKind::Set, {wrong});
                  }),
                  errors::kTypeMismatch);
    }
}

}  // namespace
}  // namespace kap
