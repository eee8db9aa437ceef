// Every member that takes a connection, called by name with one of another maker.
#include <gtest/gtest.h>

#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/std_functions.hpp>

#include "support/database.hpp"
#include "support/foreign_connection.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

using test::ForeignConnection;
using test::shown;

class MembersOnForeignConnection : public testing::Test {
protected:
    MembersOnForeignConnection() {
        inner_->Execute(
            u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(20), AggID timestamp)"
            u"INSERT INTO Clienti (Codice, Nome) VALUES (1, 'Rossi'), (23, 'Verdi')"
            u"CREATE TABLE vtx_TabVal (Codice varchar(3), Dec_Imp smallint)"
            u"INSERT INTO vtx_TabVal VALUES ('EUR', 1)"
            u"CREATE TABLE ABC_KAP_CFG (Gruppo varchar(9), Applicazione varchar(9), Procedura "
            u"varchar(9), Modulo varchar(9), Campo varchar(9), Valore varchar(9), Flag varchar(9))"
            u"INSERT INTO ABC_KAP_CFG VALUES ('G', 'A', 'Ordini', 'M', 'X', '', '3')"
            u"CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))"
            u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int NULL, "
            u"n_Prov int NULL, GestProvv int NULL, PRIMARY KEY (Codice, Anno))"
            u"CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, "
            u"Stato varchar(1) NULL, PRIMARY KEY (Codice, Anno, Numero))"
            u"INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 43, '')"
            u"INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')"
            u"INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 0, 0)");
    }
    ~MembersOnForeignConnection() override {
        EXPECT_FALSE(foreign_->sent().empty());
        EXPECT_TRUE(foreign_->openings().empty());
        EXPECT_EQ(Ref<Object>(foreign_), connection_.as<Ref<Object>>());
    }

    Variant call(const char16_t* member, std::vector<Variant> arguments) {
        return test::call(*functions_, member, std::move(arguments));
    }
    [[nodiscard]] std::string value(const String& query) const {
        return shown(test::valueOf(inner_, query));
    }

    Ref<ado::Connection> inner_ = test::openMemory();
    Ref<ForeignConnection> foreign_ = make<ForeignConnection>(inner_);
    Variant connection_{Ref<Object>(foreign_)};
    Ref<StdFunctions> functions_ = make<StdFunctions>();
};

TEST_F(MembersOnForeignConnection, OpenRecordset) {
    const Variant rows = call(u"OpenRecordset", {u"SELECT * FROM Clienti", connection_, -1, -1, -1,
                                                 true, /*CloseConnection=*/false});
    auto& recordset = *rows.as<Ref<Object>>();
    EXPECT_EQ("Long 2", shown(test::call(recordset, u"RecordCount")));
    EXPECT_EQ(Ref<Object>(foreign_), test::call(recordset, u"ActiveConnection").as<Ref<Object>>());
}

TEST_F(MembersOnForeignConnection, ControllaConnessione) {
    call(u"ControllaConnessione", {connection_});
    call(u"OpenRecordset", {u"SELECT 1", connection_});
}

TEST_F(MembersOnForeignConnection, Riga_Prog) {
    EXPECT_EQ("Double 30",
              shown(call(u"Riga_Prog", {connection_, u"SELECT MAX(Codice) FROM Clienti", 10})));
}

TEST_F(MembersOnForeignConnection, RecordsAreReadUpdatedAndDeleted) {
    const String query = u"SELECT * FROM Clienti WHERE Codice = 1";
    Variant record;
    EXPECT_TRUE(functions_->DB_Read(connection_, query, record));
    const auto bag = make<CProprieta>();
    bag->Scrivi(u"", record);
    EXPECT_EQ("String Rossi", shown(bag->Leggi(u"NOME")));
    bag->Scrivi(u"NOME", u"Bianchi");
    EXPECT_TRUE(functions_->DB_Update(connection_, query, bag->Leggi()))
        << shown(functions_->Errore()->MsgToString());
    EXPECT_EQ("String Bianchi", value(u"SELECT Nome FROM Clienti WHERE Codice = 1"));
    // The row version has changed meanwhile: the second save is another user's.
    EXPECT_FALSE(functions_->DB_Update(connection_, query, bag->Leggi()));
    EXPECT_TRUE(functions_->DB_Read(connection_, query, record));
    EXPECT_TRUE(functions_->DB_Delete(connection_, query, record))
        << shown(functions_->Errore()->MsgToString());
    EXPECT_EQ("Long 1", value(u"SELECT COUNT(*) FROM Clienti"));
}

TEST_F(MembersOnForeignConnection, kapLeggiRecord) {
    const Variant bag = call(u"kapLeggiRecord", {connection_, u"SELECT * FROM Clienti", u"Nome"});
    EXPECT_EQ("String Rossi", shown(test::call(*bag.as<Ref<Object>>(), u"Leggi", {u"Nome"})));
}

TEST_F(MembersOnForeignConnection, KapCFG) {
    const Variant bag = call(u"KapCFG", {connection_, u"ABC", u"Ordini"});
    EXPECT_EQ("String 3", shown(test::call(*bag.as<Ref<Object>>(), u"Leggi", {u"FLAG"})));
}

TEST_F(MembersOnForeignConnection, CalcVal) {
    EXPECT_EQ(2.5, call(u"CalcVal", {connection_, u"EUR", 1.25, 2}).as<double>());
}

TEST_F(MembersOnForeignConnection, Progressivi) {
    for (const char16_t* member : {u"Progressivi", u"Progressivi_OLD"}) {
        call(member, {u"FAI", u"D", u"S", 2025, 0, connection_});
        EXPECT_EQ("String ", shown(functions_->Errore()->MsgToString()));
    }
    EXPECT_EQ("Long 43", value(u"SELECT n_Def FROM vtx_TabPro"));
}

TEST_F(MembersOnForeignConnection, RicercaNumeriDocPre) {
    const Variant found =
        call(u"RicercaNumeriDocPre", {connection_, u"FAT", u"2025", 40, 45, u"P"});
    EXPECT_NE(std::u16string_view::npos, found.as<String>().view().find(u"43"));
}

TEST_F(MembersOnForeignConnection, EsportaTXT) {
    const test::TemporaryFolder folder;
    EXPECT_TRUE(call(u"EsportaTXT", {u"SELECT Codice, Nome FROM Clienti", connection_,
                                     u"EXPORT.TXT", String(folder.file(""))})
                    .as<bool>());
    EXPECT_NE(std::string::npos, test::contentOf(folder.file("EXPORT.TXT")).find("Rossi"));
}

}  // namespace
}  // namespace kap
