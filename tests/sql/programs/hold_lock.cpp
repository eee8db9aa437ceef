// Takes an application lock, says so, and keeps it until it is killed.
//
//     hold_lock CONNECTION_STRING RESOURCE

#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <thread>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "hold_lock CONNECTION_STRING RESOURCE\n";
        return EXIT_FAILURE;
    }
    try {
        auto connection = kap::make<kap::ado::Connection>();
        connection->Open(arguments[1]);
        connection->Execute("EXEC sp_getapplock '" + std::string(arguments[2]) +
                            "', 'Exclusive', 'Session'");
        std::cout << 1 << std::endl;
        while (true)
            std::this_thread::sleep_for(std::chrono::seconds(1));
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
