// Adds 1 to a counter column as often as it is told, through DB_Read and DB_Update, beside other
// programs that do the same. An update that is refused because somebody else was first is tried
// again from the reading on. Prints how many tries were refused.
//
//     increment_counter CONNECTION_STRING TIMES
//
// With 0 it goes on until it is killed, over new connections where they are lost, and writes every
// value that it has saved to standard output, on a line of its own as soon as it is saved.

#include <unistd.h>

#include <cstdint>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>

namespace {

using namespace kap;

const char* const kQuery = "SELECT Id, Valore, AggID FROM Contatore WHERE Id = 1";

// The value that it has written; 0 when another program changed the row between reading and
// writing.
std::int32_t incrementOnce(const Ref<ado::Connection>& connection, CErrore& error) {
    Variant text;
    db::DB_Read(connection, kQuery, text);
    auto record = make<CProprieta>();
    record->Scrivi(u"", text);
    const std::int32_t value = convert::toLong(record->Leggi(u"Valore")) + 1;
    record->Scrivi(u"Valore", value);
    try {
        return db::DB_Update(connection, kQuery, record->Leggi(), error) ? value : 0;
    } catch (const AutomationError& failure) {
        if (failure.number() == ado::errors::kConcurrency) {
            return 0;
        }
        throw;
    }
}

// One line in one call, so that a process that is killed leaves whole lines.
void tell(std::int32_t value) {
    const std::string line = std::to_string(value) + "\n";
    if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        throw std::runtime_error("cannot write to standard output");
    }
}

[[noreturn]] void goOn(const std::string& connectionString) {
    for (;;) {
        try {
            auto connection = make<ado::Connection>();
            connection->Open(connectionString);
            auto error = make<CErrore>();
            for (;;) {
                const std::int32_t value = incrementOnce(connection, *error);
                if (value != 0) {
                    tell(value);
                }
            }
        } catch (const AutomationError& failure) {
            std::cerr << failure.what() << '\n';  // the connection has been lost, most likely
        }
    }
}

int run(const std::string& connectionString, int times) {
    if (times == 0) {
        goOn(connectionString);
    }
    auto connection = make<ado::Connection>();
    connection->Open(connectionString);
    auto error = make<CErrore>();
    int refused = 0;
    for (int done = 0; done < times;) {
        if (incrementOnce(connection, *error) != 0) {
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
