#pragma once

#include <string>

namespace kap::cli {

// `kaputil batch`: runs the statements of a file as one transactional script.
struct BatchCommand {
    std::string file;
    std::string connection;  // may be empty for a dry run
    bool dryRun = false;     // print the script that would be sent
    bool json = false;

    // Gives back the exit code. Throws UsageError when the connection is missing.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
