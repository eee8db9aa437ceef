// A driver of which nothing is known: no rows come back from a write, no batches, no base tables.
#include <gtest/gtest.h>

#include <cstdlib>

#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::raisedBy;
using test::shown;
using test::valueOf;

class PlainDriver : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("odbcinst -q -d -n SQLite3 >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "the package libsqliteodbc is not installed";
        }
        connection_ = test::open("Driver=SQLite3;Database=" + folder_.file("dati.db"));
        connection_->Execute(
            u"CREATE TABLE clienti (codice integer PRIMARY KEY, nome varchar(30), fido "
            u"numeric(12,2), note text)");
        connection_->Execute(
            u"INSERT INTO clienti VALUES (1, 'Rossi', 2.5, 'lunga'), (2, 'Bianchi', NULL, NULL)");
    }

    LocaleScope locale_{"it-IT"};
    test::TemporaryFolder folder_;
    Ref<Connection> connection_;
};

TEST_F(PlainDriver, UpdatesReadsBackAndNoticesConflicts) {
    const auto rows = test::openLive(connection_, u"SELECT * FROM clienti ORDER BY codice");
    rows->Update(u"nome", u"Rossi & Figli");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT nome FROM clienti WHERE codice = 1")),
              "String Rossi & Figli");
    connection_->Execute(u"UPDATE clienti SET nome = 'Altro' WHERE codice = 1");
    EXPECT_EQ(raisedBy([&] {
                  rows->Update(u"nome", u"Mio");
                  return 0;
              }),
              errors::kConcurrency);
    rows->CancelUpdate();
    rows->Resync(AffectEnum::adAffectCurrent);
    EXPECT_EQ(shown(fieldOf(rows, u"nome")), "String Altro");
}

TEST_F(PlainDriver, InsertsAndDeletes) {
    const auto rows = test::openLive(connection_, u"SELECT * FROM clienti ORDER BY codice");
    rows->AddNew();
    rows->Fields()->Item(u"codice")->setValue(3);
    rows->Fields()->Item(u"nome")->setValue(u"Verdi");
    rows->Update();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT nome FROM clienti WHERE codice = 3")),
              "String Verdi");
    rows->Delete();
    rows->MoveFirst();
    rows->Delete();
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT sum(codice) FROM clienti")), "Long 2");
}

TEST_F(PlainDriver, KnowsUnknownTables) {
    EXPECT_NE(raisedBy([&] { return connection_->Execute(u"SELECT * FROM nix"); }), 0);
}

TEST_F(PlainDriver, RefusesAnIsolationLevelThatItDoesNotHave) {
    connection_->setIsolationLevel(IsolationLevelEnum::adXactRepeatableRead);
    EXPECT_EQ(raisedBy([&] { return connection_->BeginTrans(); }), errors::kFeatureNotAvailable);
    connection_->setIsolationLevel(IsolationLevelEnum::adXactSerializable);
    EXPECT_EQ(connection_->BeginTrans(), 1);
    connection_->RollbackTrans();
}

}  // namespace
}  // namespace kap::ado
