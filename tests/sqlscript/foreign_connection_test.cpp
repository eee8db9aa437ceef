// Scripts on a connection of another maker, as programs have them that hand in their own.
#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "support/database.hpp"
#include "support/foreign_connection.hpp"
#include "support/late_bound.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::ForeignConnection;
using test::raisedBy;
using test::shown;

class ScriptOnForeignConnection : public testing::Test {
protected:
    ScriptOnForeignConnection() {
        test::prepare(inner_,
                      u"CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo int CHECK (Saldo >= 0));"
                      u"INSERT INTO Conti VALUES (1, 10)");
        test::invoke(*sql_, u"ActiveConnection", InvokeKind::Set, {Variant(foreign_)});
    }

    [[nodiscard]] Variant balance() const {
        return test::valueOf(inner_, u"SELECT SUM(Saldo) FROM Conti");
    }

    Ref<ado::Connection> inner_ = test::openMemory();
    Ref<ForeignConnection> foreign_ = make<ForeignConnection>(inner_);
    Ref<CSQL> sql_ = make<CSQL>();
};

TEST_F(ScriptOnForeignConnection, TellsTheServersErrorAndTheStatementsOwnMessage) {
    KAP_NEEDS_DIALECT(inner_, "a script is one text of it");
    sql_->Command(u"INSERT INTO Conti VALUES (2, 5)", u"Accredito fallito");
    sql_->Command(u"INSERT INTO Conti VALUES (1, 5)", u"Conto doppio");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(u"1", sql_->Errore()->Numero().as<String>().view());
    const std::u16string messages(sql_->Errore()->MsgToString().as<String>().view());
    const std::size_t own = messages.find(u"Conto doppio");
    const std::size_t servers = messages.find(u"PRIMARY KEY");
    ASSERT_NE(std::u16string::npos, servers);
    ASSERT_NE(std::u16string::npos, own);
    EXPECT_LT(servers, own);
    EXPECT_EQ("Long 10", shown(balance()));
    EXPECT_EQ("if (@@TRANCOUNT>0) ROLLBACK TRANSACTION", foreign_->sent().back().script);
}

TEST_F(ScriptOnForeignConnection, RunsWithoutLimitAndLeavesTheLimitAsItWas) {
    KAP_NEEDS_DIALECT(inner_, "a script is one text of it");
    inner_->setCommandTimeout(7);
    sql_->Command(u"UPDATE Conti SET Saldo = 11");
    EXPECT_TRUE(sql_->Execute());
    ASSERT_EQ(1U, foreign_->sent().size());
    EXPECT_EQ(0, foreign_->sent()[0].timeout);
    EXPECT_EQ(7, inner_->CommandTimeout());

    sql_->Command(u"UPDATE Conti SET Saldo = -1");
    EXPECT_FALSE(sql_->Execute());
    EXPECT_EQ(7, inner_->CommandTimeout());
}

TEST_F(ScriptOnForeignConnection, GivesBackTheObjectThatWasSet) {
    EXPECT_EQ(Ref<Object>(foreign_),
              test::invoke(*sql_, u"ActiveConnection", InvokeKind::Get).as<Ref<Object>>());
    test::invoke(*sql_, u"ActiveConnection", InvokeKind::Set, {Variant(inner_)});
    EXPECT_EQ(Ref<Object>(inner_),
              test::invoke(*sql_, u"ActiveConnection", InvokeKind::Get).as<Ref<Object>>());
}

TEST_F(ScriptOnForeignConnection, ShowsThatConnectionsString) {
    foreign_->show(u"Provider=Altro;Data Source=srv");
    EXPECT_EQ(u"Provider=Altro;Data Source=srv", sql_->ConnectionString().view());
}

TEST_F(ScriptOnForeignConnection, IsReopenedOnAnotherStringAndClosedAtTheEnd) {
    KAP_NEEDS_DIALECT(inner_, "a script is one text of it");
    const String other(test::memoryDatabase());
    const auto keeper = test::open(other.utf8());
    keeper->Execute(u"CREATE TABLE Altrove (A int)");
    sql_->setConnectionString(other);
    EXPECT_EQ((std::vector<std::string>{"close", "open"}), foreign_->openings());
    EXPECT_EQ(keeper->ConnectionString(), inner_->ConnectionString());
    EXPECT_EQ(Ref<Object>(foreign_),
              test::invoke(*sql_, u"ActiveConnection", InvokeKind::Get).as<Ref<Object>>());
    sql_->Command(u"INSERT INTO Altrove VALUES (1)");
    EXPECT_TRUE(sql_->Execute());
    EXPECT_EQ("Long 1", shown(test::valueOf(keeper, u"SELECT COUNT(*) FROM Altrove")));

    sql_ = Ref<CSQL>();
    EXPECT_EQ(ado::ObjectStateEnum::adStateClosed, inner_->State());
}

TEST_F(ScriptOnForeignConnection, StaysTheClientsWhenItsStringCannotBeOpened) {
    EXPECT_EQ(ado::errors::kProviderNotFound, raisedBy([&] {
                  sql_->setConnectionString(u"Provider=Manca");
                  return 0;
              }));
    EXPECT_EQ(ado::ObjectStateEnum::adStateClosed, inner_->State());
    inner_->Open(String(test::memoryDatabase()));
    sql_ = Ref<CSQL>();
    EXPECT_EQ(ado::ObjectStateEnum::adStateOpen, inner_->State());
}

TEST_F(ScriptOnForeignConnection, ThatIsNotOpenIsRefusedWhenTheScriptRuns) {
    inner_->Close();
    EXPECT_EQ(ado::errors::kInvalidConnection, raisedBy([&] { return sql_->Execute(); }));
}

class TransferOnForeignConnection : public ScriptOnForeignConnection {
protected:
    void SetUp() override {
        KAP_NEEDS_DIALECT(inner_, "its temporary tables have names of another kind");
        inner_->Execute(
            u"CREATE TABLE #Nuovi (Saldo int, Codice int, Altro int)"
            u"INSERT INTO #Nuovi VALUES (5, 2, 0), (6, 3, 0)");
        sql_->Parametri()->Scrivi(u"FROM", u"#Nuovi");
        sql_->Parametri()->Scrivi(u"TO", u"Conti");
    }
};

TEST_F(TransferOnForeignConnection, MatchesTheColumnsThroughIt) {
    EXPECT_NE(String(), sql_->AddTmp());
    EXPECT_TRUE(sql_->Execute()) << shown(sql_->Errore()->MsgToString());
    EXPECT_EQ("Long 21", shown(balance()));
}

TEST_F(TransferOnForeignConnection, AsksItForTheColumnsWhenOnlyItsMakerCanOpenAnother) {
    foreign_->show(u"Provider=Altro;Data Source=srv");
    EXPECT_NE(String(), sql_->AddTmp());
    EXPECT_TRUE(sql_->Execute()) << shown(sql_->Errore()->MsgToString());
    EXPECT_EQ("Long 21", shown(balance()));
    EXPECT_EQ(ado::ObjectStateEnum::adStateOpen, inner_->State());
}

}  // namespace
}  // namespace kap
