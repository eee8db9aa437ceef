#pragma once

#include <optional>
#include <string>

namespace kap::cli {

// `kaputil sql`: runs a script and prints what each of its statements answered.
struct SqlCommand {
    std::string connection;              // the connection string
    std::optional<std::string> file;     // where the script is ...
    std::optional<std::string> command;  // ... or the script; neither: standard input
    bool json = false;
    bool csv = false;
    bool plan = false;                  // explain the statements instead of running them
    bool keepGoing = false;             // go on behind a batch that failed
    std::optional<std::string> backup;  // copy the database to this file first
    bool check = false;                 // check the database first

    // Runs the script batch by batch up to the first error, and gives back the exit code. Results
    // go to standard output, errors and what the script prints to standard error.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
