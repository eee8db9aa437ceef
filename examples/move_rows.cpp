// Moves the rows of a work table into a permanent one and updates their total, all in one script;
// then shows a script that fails and leaves nothing behind.
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include <iostream>

namespace {

void show(const char* what, kap::CSQL& sql, bool done) {
    std::cout << what << (done ? "done" : "refused") << '\n';
    if (!done) {
        std::cout << sql.Errore()->MsgToString().as<kap::String>().utf8();
    }
}

}  // namespace

int main() {
    const auto connection = kap::make<kap::ado::Connection>();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:esempio");
    connection->Execute(
        u"CREATE TABLE Righe (Riga int PRIMARY KEY, Qta int, Prezzo int, Importo int) "
        u"CREATE TABLE Documento (Totale int) INSERT INTO Documento VALUES (0) "
        u"CREATE TABLE #Lavoro (Riga int, Qta int, Prezzo int) "
        u"INSERT INTO #Lavoro VALUES (10, 2, 90), (20, 5, 12)");

    const auto sql = kap::make<kap::CSQL>();
    sql->setActiveConnection(connection);
    sql->Parametri()->Scrivi(u"FROM", u"#Lavoro");
    sql->Parametri()->Scrivi(u"TO", u"Righe");
    sql->Parametri()->Scrivi(u"DELETE_FROM", u"SI");
    sql->Parametri()->Scrivi(u"Righe.Importo", u"Qta * Prezzo");
    sql->AddTmp();
    sql->Command(u"UPDATE Documento SET Totale = (SELECT SUM(Importo) FROM Righe)",
                 u"Totale non aggiornato");
    const bool moved = sql->Execute();
    show("moving:  ", *sql, moved);

    sql->Clear();
    sql->Command(u"DELETE Righe WHERE Riga = 10", u"Riga non cancellata");
    sql->Command(u"INSERT INTO Righe (Riga) VALUES (20)", u"La riga 20 esiste");
    const bool refused = !sql->Execute();
    show("writing: ", *sql, !refused);

    const auto rows = connection->Execute(u"SELECT COUNT(*) FROM Righe");
    const bool bothThere = rows->Fields()->Item(0)->Value().as<std::int32_t>() == 2;
    return moved && refused && bothThere ? 0 : 1;
}
