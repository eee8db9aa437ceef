// Runs a text, says so, and keeps its connection until it is killed.
//
//     hold_session CONNECTION_STRING TEXT

#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <thread>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "hold_session CONNECTION_STRING TEXT\n";
        return EXIT_FAILURE;
    }
    try {
        auto connection = kap::make<kap::ado::Connection>();
        connection->Open(arguments[1]);
        connection->Execute(arguments[2]);
        std::cout << 1 << std::endl;
        while (true)
            std::this_thread::sleep_for(std::chrono::seconds(1));
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
