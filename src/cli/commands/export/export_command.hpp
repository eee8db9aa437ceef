#pragma once

#include <string>

namespace kap::cli {

// `kaputil export`: the rows of a query in a text file.
struct ExportCommand {
    std::string connection;  // see connectionTextOf()
    std::string query;
    std::string folder = ".";
    std::string name;         // of the file
    bool keepSchema = false;  // uses the Schema.ini that is there
    bool fit = false;         // describes columns that every value fits into
    bool csv = false;         // comma-separated values instead, which need no description
    std::string messageLog;   // where message boxes go; empty: the system log
    bool json = false;

    // Writes the file, or leaves the one that is there as it is; shows on a terminal how far it is,
    // and gives back the exit code.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
