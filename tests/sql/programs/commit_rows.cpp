// Inserts pairs of rows, one transaction a pair, and says after each commit which pair it was. To
// be killed at any moment: what was said must be there, and never half a pair.
//
//     commit_rows CONNECTION_STRING WRITER

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "commit_rows CONNECTION_STRING WRITER\n";
        return EXIT_FAILURE;
    }
    try {
        const std::string writer = arguments[2];
        auto connection = kap::make<kap::ado::Connection>();
        connection->Open(arguments[1]);
        for (int pair = 1;; ++pair) {
            const std::string values = "(" + writer + ", " + std::to_string(pair) + ", ";
            connection->Execute("BEGIN TRANSACTION INSERT INTO pairs VALUES " + values +
                                "1) INSERT INTO pairs VALUES " + values + "2) COMMIT");
            std::cout << pair << std::endl;
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
