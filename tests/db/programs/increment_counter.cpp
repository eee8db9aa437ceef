// Adds 1 to a counter column as often as it is told, through DB_Read and DB_Update, beside other
// programs that do the same. An update that is refused because somebody else was first is tried
// again from the reading on. Prints how many tries were refused.
//
//     increment_counter CONNECTION_STRING TIMES

#include <cstdint>
#include <exception>
#include <iostream>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>

namespace {

using namespace kap;

const char* const kQuery = "SELECT Id, Valore, AggID FROM Contatore WHERE Id = 1";

// False when another program changed the row between reading and writing.
bool incrementOnce(const Ref<ado::Connection>& connection, CErrore& error) {
    Variant text;
    db::DB_Read(connection, kQuery, text);
    auto record = make<CProprieta>();
    record->Scrivi(u"", text);
    record->Scrivi(u"Valore", convert::toLong(record->Leggi(u"Valore")) + 1);
    try {
        return db::DB_Update(connection, kQuery, record->Leggi(), error);
    } catch (const AutomationError& failure) {
        if (failure.number() == ado::errors::kConcurrency) {
            return false;
        }
        throw;
    }
}

int run(const std::string& connectionString, int times) {
    auto connection = make<ado::Connection>();
    connection->Open(connectionString);
    auto error = make<CErrore>();
    int refused = 0;
    for (int done = 0; done < times;) {
        if (incrementOnce(connection, *error)) {
            ++done;
        } else {
            ++refused;
        }
    }
    std::cout << refused << '\n';
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: increment_counter CONNECTION_STRING TIMES\n";
        return 2;
    }
    try {
        return run(arguments[1], std::stoi(arguments[2]));
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
