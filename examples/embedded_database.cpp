// The embedded database by itself: a file, scripts of the dialect, and what they answer, without
// connections and recordsets.
#include <kaputil/engine/embedded_database.hpp>

#include <iostream>

namespace {

using kap::engine::EmbeddedDatabase;

void print(const kap::engine::ResultSet& set) {
    for (const auto& row : set.rows) {
        for (const auto& value : row) {
            if (const auto* number = std::get_if<std::int64_t>(&value)) {
                std::cout << *number << '\t';
            } else if (const auto* text = std::get_if<std::string>(&value)) {
                std::cout << *text << '\t';
            } else {
                std::cout << "-\t";
            }
        }
        std::cout << '\n';
    }
}

}  // namespace

int main() {
    EmbeddedDatabase database(":memory:");
    database.run(
        "CREATE TABLE Fatture (Numero int IDENTITY PRIMARY KEY, Cliente varchar(20), "
        "Importo decimal(12,2) NOT NULL)");

    database.begin();
    database.run("INSERT INTO Fatture (Cliente, Importo) VALUES ('Rossi', 1250.5), ('Neri', 80)");
    database.commit();

    for (const auto& set : database.run("SELECT Numero, Cliente, Importo FROM Fatture")) {
        print(set);
    }
    for (const auto& table : database.tables()) {
        std::cout << table.name << ": " << table.columns.size() << " columns\n";
    }
    database.check();

    try {
        database.run("SELECT * FROM Clienti");
    } catch (const kap::engine::DatabaseError& error) {
        std::cout << "error " << error.number() << ": " << error.what() << '\n';
        return 0;
    }
    return 1;
}
