#pragma once

#include <string>

namespace kap::cli {

// `kaputil export`: the rows of a query in a text file.
struct ExportCommand {
    std::string connection;  // the connection string
    std::string query;
    std::string folder = ".";
    std::string name;         // of the file
    bool keepSchema = false;  // uses the Schema.ini that is there
    std::string messageLog;   // where message boxes go; empty: the system log
    bool json = false;

    // Writes the file, shows on a terminal how far it is, and gives back the exit code.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
