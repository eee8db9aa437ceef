// Reads a record into a property string, edits it and saves it, under the eyes of a second user.
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/core/cproprieta.hpp>

#include <iostream>

int main() {
    const auto connection = kap::make<kap::ado::Connection>();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:");
    connection->Execute(
        u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40), AggID timestamp) "
        u"INSERT INTO Clienti (Codice, Nome) VALUES (12, 'Ferramenta Rossi')");

    kap::Variant session = connection;
    const kap::String query = u"SELECT * FROM Clienti WHERE Codice = 12";
    const auto f = kap::make<kap::StdFunctions>();

    // Two users read the same record.
    kap::Variant anna;
    kap::Variant bruno;
    f->DB_Read(session, query, anna);
    f->DB_Read(session, query, bruno);
    std::cout << "read:   " << anna.as<kap::String>().utf8() << '\n';

    // Anna changes the name and saves: her record still has the version of the database.
    const auto form = kap::make<kap::CProprieta>();
    form->Scrivi(u"", anna);
    form->Scrivi(u"Nome", u"Ferramenta Rossi & Figli");
    const bool annaSaved = f->DB_Update(session, query, form->Leggi());
    std::cout << "Anna:   " << (annaSaved ? "saved" : "refused") << '\n';

    // Bruno saves what he read before that, and is told so.
    const bool brunoSaved = f->DB_Update(session, query, bruno);
    const kap::Variant message = f->Errore()->LeggiAttributo(u"ERR_MSG1");
    std::cout << "Bruno:  " << message.as<kap::String>().utf8() << '\n';
    return annaSaved && !brunoSaved ? 0 : 1;
}
