#pragma once

#include <optional>
#include <string>

namespace kap::tools {

// `kaputil sql`: runs a script and prints what each of its statements answered.
struct SqlCommand {
    std::string connection;              // the connection string
    std::optional<std::string> file;     // where the script is ...
    std::optional<std::string> command;  // ... or the script; neither: standard input
    bool json = false;

    // Runs the script batch by batch up to the first error, and gives back the exit code. Results
    // go to standard output, errors to standard error.
    [[nodiscard]] int run() const;
};

}  // namespace kap::tools
