#include <gtest/gtest.h>

#include <string>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "support/database.hpp"
#include "support/prepared_tables.hpp"
#include "support/recording_database.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::FakeDatabase;
using test::raisedBy;
using test::RecordingDatabase;
using test::shown;

constexpr const char* kCleared = "String <ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1></ERR_MSG1>";

Ref<CSQL> scriptOn(const Ref<ado::Connection>& connection) {
    const auto sql = make<CSQL>();
    sql->setActiveConnection(connection);
    return sql;
}

std::string messagesOf(const Ref<CSQL>& sql) {
    return shown(sql->Errore()->MsgToString());
}

TEST(ScriptRun, IsOneCall) {
    RecordingDatabase database;
    database.answerNothing();
    const auto sql = scriptOn(database.connection());
    sql->Command(u"DELETE T WHERE A = 'x'");
    EXPECT_TRUE(sql->Execute());
    EXPECT_EQ(database.statements(), std::vector{sql->SQL_Execute().utf8()});
    EXPECT_EQ(shown(sql->Errore()->ToString()), kCleared);
}

TEST(ScriptRun, WaitsWithoutLimit) {
    const test::FakeDriver driver;
    driver.database.answer({});
    const auto sql = make<CSQL>();
    sql->setConnectionString(u"Provider=Fake");
    sql->Execute();
    ASSERT_EQ(driver.database.requests.size(), 1U);
    EXPECT_EQ(driver.database.requests[0].timeout.count(), 0);
    EXPECT_TRUE(driver.database.requests[0].parameters.empty());
}

TEST(ScriptRun, RollsBackWhatAFailedScriptLeftOpen) {
    RecordingDatabase database;
    database.fail(-2147217900, "Syntax error.");
    database.answerNothing();
    const auto sql = scriptOn(database.connection());
    EXPECT_FALSE(sql->Execute());
    EXPECT_EQ(database.statements(),
              (std::vector{sql->SQL_Execute().utf8(),
                           std::string("if (@@TRANCOUNT>0) ROLLBACK TRANSACTION")}));
    EXPECT_EQ(shown(sql->Errore()->ToString()),
              "String <ERR_NUMERO>1</ERR_NUMERO><ERR_MSG1>Syntax error.</ERR_MSG1>");
}

TEST(ScriptRun, GivesEveryMessageInTheServersOrder) {
    const test::FakeDriver driver;
    driver.database.answers.push_back({FakeDatabase::message(-2147217900, "Ultimo"),
                                       {},
                                       {FakeDatabase::message(-2147217873, "Primo"),
                                        FakeDatabase::message(-2147217873, "Secondo")},
                                       {}});
    const auto sql = make<CSQL>();
    sql->setConnectionString(u"Provider=Fake");
    EXPECT_FALSE(sql->Execute());
    EXPECT_EQ(messagesOf(sql), "String Primo\r\nSecondo\r\nUltimo\r\n");
}

TEST(ScriptRun, TellsOfALostConnectionAndCanBeUsedAgain) {
    RecordingDatabase database;
    database.fail(-2147467259, "Connection broken.");
    database.fail(-2147467259, "No connection.");
    database.answerNothing();
    const auto sql = scriptOn(database.connection());
    sql->Command(u"DELETE T");
    EXPECT_FALSE(sql->Execute());
    EXPECT_EQ(messagesOf(sql), "String Connection broken.\r\n");
    EXPECT_TRUE(sql->Execute());
    EXPECT_EQ(shown(sql->Errore()->ToString()), kCleared);
    EXPECT_EQ(database.statements()[2], database.statements()[0]);
}

TEST(ScriptRun, TellsWhatTheConnectionHoldsOfItsFailures) {
    RecordingDatabase database;
    database.answerNothing();
    const auto sql = scriptOn(database.connection());
    sql->setSQLString(std::u16string(1, char16_t{0xD800}));  // half a character cannot be sent
    EXPECT_FALSE(sql->Execute());
    EXPECT_EQ(shown(sql->Errore()->Numero()), "String 1");
    EXPECT_EQ(messagesOf(sql), "String ");
}

TEST(ScriptRun, RaisesTheErrorOfAConnectionThatIsNotOpen) {
    const auto sql = make<CSQL>();
    sql->Errore()->AddMessaggio(u"di prima");
    EXPECT_EQ(raisedBy([&] { return sql->Execute(); }), ado::errors::kInvalidConnection);
    EXPECT_EQ(shown(sql->Errore()->ToString()), kCleared);
}

// On a database that reads what the library sends.
class ScriptOnADatabase : public testing::Test {
protected:
    void SetUp() override {
        KAP_NEEDS_DIALECT(connection_, "a script is one text of it");
        connection_->Execute(
            u"CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo int NOT NULL CHECK (Saldo >= 0)) "
            u"INSERT INTO Conti VALUES (1, 100), (2, 50)");
    }

    [[nodiscard]] std::string balances() const {
        std::string all;
        const auto rows = connection_->Execute(u"SELECT Codice, Saldo FROM Conti ORDER BY Codice");
        for (; !rows->Eof(); rows->MoveNext()) {
            all += shown(test::fieldOf(rows, 0)) + "=" + shown(test::fieldOf(rows, 1)) + ";";
        }
        return all;
    }
    [[nodiscard]] std::string openTransactions() const {
        return shown(test::valueOf(connection_, u"SELECT @@trancount"));
    }

    static constexpr const char* kUnchanged = "Long 1=Long 100;Long 2=Long 50;";
    Ref<ado::Connection> connection_ = test::openMemory();
    Ref<CSQL> sql_ = scriptOn(connection_);
};

TEST_F(ScriptOnADatabase, DoesEveryStatementInOrder) {
    sql_->Command(u"UPDATE Conti SET Saldo = Saldo - 30 WHERE Codice = 1", u"Addebito");
    sql_->Command(u"UPDATE Conti SET Saldo = Saldo + 30 WHERE Codice = 2", u"Accredito");
    sql_->Command(u"INSERT INTO Conti VALUES (3, (SELECT SUM(Saldo) FROM Conti))");
    EXPECT_TRUE(sql_->Execute()) << messagesOf(sql_);
    EXPECT_EQ(balances(), "Long 1=Long 70;Long 2=Long 80;Long 3=Long 150;");
    EXPECT_EQ(shown(sql_->Errore()->ToString()), kCleared);
    EXPECT_EQ(openTransactions(), "Long 0");
}

TEST_F(ScriptOnADatabase, SendsTheSameStatementsAgainUntilTheyAreCleared) {
    sql_->Command(u"UPDATE Conti SET Saldo = Saldo + 1 WHERE Codice = 1");
    EXPECT_TRUE(sql_->Execute());
    EXPECT_TRUE(sql_->Execute());
    sql_->Clear();
    EXPECT_TRUE(sql_->Execute());
    EXPECT_EQ(balances(), "Long 1=Long 102;Long 2=Long 50;");
}

TEST_F(ScriptOnADatabase, DoesNothingWhenTheSecondStatementFails) {
    sql_->Command(u"UPDATE Conti SET Saldo = 0 WHERE Codice = 1", u"Azzeramento fallito");
    sql_->Command(u"INSERT INTO Conti VALUES (2, 7)", u"Conto già presente");
    sql_->Command(u"UPDATE Conti SET Saldo = 5", u"Mai raggiunto");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(balances(), kUnchanged);
    EXPECT_EQ(openTransactions(), "Long 0");
    EXPECT_EQ(shown(sql_->Errore()->Numero()), "String 1");
    EXPECT_EQ(messagesOf(sql_),
              "String Violation of PRIMARY KEY constraint 'PK_Conti'. Cannot insert duplicate key "
              "in object 'dbo.Conti'.\r\nConto già presente\r\n");
}

TEST_F(ScriptOnADatabase, SendsTheQuotesOfAStatementAsTheyAre) {
    sql_->Command(u"CREATE TABLE Nomi (Nome varchar(20))");
    sql_->Command(u"INSERT INTO Nomi VALUES ('L''Aquila')");
    EXPECT_TRUE(sql_->Execute()) << messagesOf(sql_);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT Nome FROM Nomi")), "String L'Aquila");
}

TEST_F(ScriptOnADatabase, CutsAMessageToAHundredCharacters) {
    sql_->Command(u"INSERT INTO Conti VALUES (1, 1)", std::u16string(90, u'a') + u"0123456789bcd");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_TRUE(messagesOf(sql_).ends_with("\r\n" + std::string(90, 'a') + "0123456789\r\n"))
        << messagesOf(sql_);
}

TEST_F(ScriptOnADatabase, IsNotRunAtAllWhenAMessageHoldsAQuote) {
    sql_->Command(u"UPDATE Conti SET Saldo = 0", u"L'errore");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(balances(), kUnchanged);
    EXPECT_EQ(openTransactions(), "Long 0");
}

TEST_F(ScriptOnADatabase, IsRolledBackWhenAnErrorEndsTheWholeBatch) {
    sql_->Command(u"UPDATE Conti SET Saldo = 0", u"Azzeramento fallito");
    sql_->Command(u"SELECT CAST('x' AS int)", u"Non è un numero");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(balances(), kUnchanged);
    EXPECT_EQ(openTransactions(), "Long 0");
    EXPECT_EQ(
        messagesOf(sql_),
        "String Conversion failed when converting the varchar value 'x' to data type int.\r\n");
}

TEST_F(ScriptOnADatabase, IsRolledBackWhenATableIsNotThere) {
    sql_->Command(u"UPDATE Conti SET Saldo = 0", u"Azzeramento fallito");
    sql_->Command(u"UPDATE Manca SET Saldo = 0", u"Tabella assente");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(balances(), kUnchanged);
    EXPECT_EQ(openTransactions(), "Long 0");
    // The text ends there, and the server tells that it has left a transaction open; only then is
    // that undone.
    EXPECT_EQ(messagesOf(sql_),
              "String Invalid object name 'Manca'.\r\nTransaction count after EXECUTE indicates a "
              "mismatching number of BEGIN and COMMIT statements. Previous count = 0, current "
              "count = 1.\r\n");
}

TEST_F(ScriptOnADatabase, GivesWhatTheScriptRaisesItself) {
    sql_->Command(u"IF EXISTS (SELECT * FROM Conti WHERE Saldo < 60) RAISERROR ('Scoperto', 16, 1)",
                  u"Controllo saldi");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(messagesOf(sql_), "String Scoperto\r\nControllo saldi\r\n");
}

TEST_F(ScriptOnADatabase, ReadsNoRowsOfTheStatements) {
    sql_->Command(u"SELECT * FROM Conti");
    sql_->Command(u"DELETE Conti WHERE Codice = 2");
    EXPECT_TRUE(sql_->Execute()) << messagesOf(sql_);
    EXPECT_EQ(balances(), "Long 1=Long 100;");
}

TEST_F(ScriptOnADatabase, CanBeUsedAgainAfterAFailure) {
    sql_->Command(u"INSERT INTO Conti VALUES (1, 1)");
    EXPECT_FALSE(sql_->Execute());
    sql_->Clear();
    sql_->Command(u"INSERT INTO Conti VALUES (3, 1)");
    EXPECT_TRUE(sql_->Execute()) << messagesOf(sql_);
    EXPECT_EQ(shown(sql_->Errore()->ToString()), kCleared);
}

TEST_F(ScriptOnADatabase, RunsWithoutStatements) {
    EXPECT_TRUE(sql_->Execute()) << messagesOf(sql_);
    EXPECT_EQ(openTransactions(), "Long 0");
}

}  // namespace
}  // namespace kap
