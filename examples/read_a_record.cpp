// Reads a record of a database in memory, and one of its fields.
#include <kaputil/ado/connection.hpp>
#include <kaputil/catalogue/std_functions.hpp>

#include <iostream>

int main() {
    const auto connection = kap::make<kap::ado::Connection>();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:");
    connection->Execute(
        u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40)) "
        u"INSERT INTO Clienti VALUES (12, 'Ferramenta Rossi')");
    kap::Variant session = connection;
    kap::Variant record;
    kap::make<kap::StdFunctions>()->DB_Read(session, u"SELECT * FROM Clienti", record);
    const auto fields = kap::make<kap::CProprieta>();
    fields->Scrivi(u"", record);
    std::cout << fields->Leggi(u"Nome").as<kap::String>().utf8() << '\n';  // Ferramenta Rossi
}
