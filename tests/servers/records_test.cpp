// The record helpers on a database server, whose row version a trigger keeps.
#include <gtest/gtest.h>

#include <kaputil/automation/locale.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>

#include "relay.hpp"
#include "server.hpp"
#include "support/processes.hpp"
#include "support/shown.hpp"

namespace kap::db {
namespace {

using test::raisedBy;
using test::shown;

constexpr const char16_t* kUpdatedByOthers =
    u"Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!\r\n";
constexpr const char16_t* kDeletedByOthers =
    u"Attenzione: Record Eliminato da altro Utente, Operazione Annullata!\r\n";

class ServerRecords : public test::ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        run(test::kRowVersions);
        run("CREATE TABLE doc (codice varchar(5) PRIMARY KEY, descr varchar(20), "
            "importo money, sconto numeric(5,2), peso real, data timestamp, righe int, chiuso bool,"
            " aggid rowversion);"
            "CREATE TRIGGER v BEFORE INSERT OR UPDATE ON doc FOR EACH ROW "
            "EXECUTE FUNCTION keep_row_version();"
            "INSERT INTO doc VALUES ('A1', 'Primo', 1234.5, 10.25, 1.5, '2003-12-31 18:30:00', 3, "
            "true); INSERT INTO doc (codice) VALUES ('B2')");
    }
    [[nodiscard]] static String row(const std::string& code) {
        return "SELECT * FROM Doc WHERE Codice = '" + code + "'";
    }
    [[nodiscard]] Ref<CProprieta> read(const std::string& code, bool expected = true) {
        Variant text;
        EXPECT_EQ(DB_Read(session_, row(code), text), expected);
        auto properties = make<CProprieta>();
        properties->Scrivi(u"", text);
        return properties;
    }
    bool update(const std::string& code, const Ref<CProprieta>& properties) {
        return DB_Update(session_, row(code), properties->Leggi(), *error_);
    }
    [[nodiscard]] std::string stored(const std::string& column, const std::string& code) const {
        return value("SELECT " + column + " FROM doc WHERE codice = '" + code + "'");
    }
    [[nodiscard]] String message() const { return error_->MsgToString().as<String>(); }

    LocaleScope locale_{"it-IT"};
    Ref<CErrore> error_ = make<CErrore>();
    Variant session_;
};

TEST_F(ServerRecords, ReadsARowWithItsVersion) {
    session_ = Variant(connection_);
    const auto record = read("A1");
    EXPECT_EQ(shown(record->Leggi(u"Descr")), "String Primo");
    EXPECT_EQ(shown(record->Leggi(u"Importo")), "String 1234,5");
    EXPECT_EQ(shown(record->Leggi(u"Sconto")), "String 10,25");
    EXPECT_EQ(shown(record->Leggi(u"Peso")), "String 1,5");
    EXPECT_EQ(shown(record->Leggi(u"Data")), "String 31/12/2003 18:30:00");
    EXPECT_EQ(shown(record->Leggi(u"AggID")), "String 1");
}

TEST_F(ServerRecords, TheFirstToSaveWins) {
    session_ = Variant(connection_);
    const auto anna = read("A1");
    const auto bruno = read("A1");
    anna->Scrivi(u"Descr", u"Anna");
    EXPECT_TRUE(update("A1", anna));
    bruno->Scrivi(u"Descr", u"Bruno");
    EXPECT_FALSE(update("A1", bruno));
    EXPECT_EQ(shown(Variant(error_->Numero())), "String 1");
    EXPECT_EQ(message(), String(kUpdatedByOthers));
    EXPECT_EQ(stored("descr", "A1"), "String Anna");
}

TEST_F(ServerRecords, ARowWithNullsIsSavedAsItIs) {
    session_ = Variant(connection_);
    const auto record = read("B2");
    EXPECT_TRUE(update("B2", record));
    EXPECT_FALSE(update("B2", record));
}

TEST_F(ServerRecords, InsertsWhatWasNotThere) {
    session_ = Variant(connection_);
    const auto record = read("C3", false);
    record->Scrivi(u"Codice", u"C3");
    record->Scrivi(u"Descr", u"Terzo");
    record->Scrivi(u"Righe", 7);
    EXPECT_TRUE(update("C3", record));
    EXPECT_EQ(stored("descr", "C3"), "String Terzo");
    EXPECT_EQ(stored("righe", "C3"), "Long 7");
}

TEST_F(ServerRecords, ARowDeletedMeanwhileIsTold) {
    session_ = Variant(connection_);
    const auto record = read("A1");
    Variant text;
    EXPECT_TRUE(DB_Delete(session_, row("A1"), text, *error_));
    EXPECT_FALSE(update("A1", record));
    EXPECT_EQ(message(), String(kDeletedByOthers));
    EXPECT_FALSE(DB_Delete(session_, row("A1"), text, *error_));
}

TEST_F(ServerRecords, LeadsToTheNextLineNumber) {
    Variant session(connection_);
    String sql = u"SELECT max(righe) FROM doc";
    std::int16_t step = 10;
    std::int16_t first = 10;
    EXPECT_EQ(shown(Riga_Prog(session, sql, step, first)), "Double 10");
    run("UPDATE doc SET righe = 23");
    EXPECT_EQ(shown(Riga_Prog(session, sql, step, first)), "Double 30");
}

TEST_F(ServerRecords, AnUnknownTableIsRaisedWithoutTryingAgain) {
    test::Relay relay(server_->port());
    Variant session(test::open(server_->connection(database_->name(), relay.port())));
    (void)relay.roundTrips();
    EXPECT_EQ(raisedBy([&] { return OpenRecordset(u"SELECT * FROM nix", session); }),
              ado::errors::kUnknownObject);
    EXPECT_LE(relay.roundTrips(), 2);
}

TEST_F(ServerRecords, TakeFewRoundTrips) {
    test::Relay relay(server_->port());
    session_ = Variant(test::open(server_->connection(database_->name(), relay.port())));
    for (int i = 0; i < 2; ++i) {
        (void)read("A1");  // the first reading of a table asks for its key, too
    }
    (void)relay.roundTrips();
    auto record = read("A1");
    EXPECT_EQ(relay.roundTrips(), 1);
    record->Scrivi(u"Descr", u"Nuovo");
    EXPECT_TRUE(update("A1", record));
    EXPECT_EQ(relay.roundTrips(), 2);
    Variant text;
    EXPECT_TRUE(DB_Delete(session_, row("A1"), text, *error_));
    EXPECT_EQ(relay.roundTrips(), 2);
}

TEST_F(ServerRecords, EightProcessesEditingTheSameRowNeverLoseAnUpdate) {
    constexpr int kTimes = 20;
    constexpr int kProcesses = 8;
    run("CREATE TABLE contatore (id int PRIMARY KEY, valore int, aggid rowversion);"
        "CREATE TRIGGER v BEFORE INSERT OR UPDATE ON contatore FOR EACH ROW "
        "EXECUTE FUNCTION keep_row_version(); INSERT INTO contatore VALUES (1, 0)");
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(test::startProgram("increment_counter",
                                              {database_->connection(), std::to_string(kTimes)}));
    }
    for (const pid_t child : children) {
        EXPECT_TRUE(test::succeeds(child));
    }
    EXPECT_EQ(value("SELECT valore FROM contatore"), "Long " + std::to_string(kProcesses * kTimes));
}

}  // namespace
}  // namespace kap::db
