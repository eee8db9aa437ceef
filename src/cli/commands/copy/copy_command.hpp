#pragma once

#include <string>
#include <vector>

namespace kap::cli {

// `kaputil copy`: moves the tables of one database to another.
struct CopyCommand {
    std::string from;  // the connection strings
    std::string to;
    std::vector<std::string> tables;  // empty: all
    bool json = false;

    // Copies table by table, compares both sides at the end of each, and gives back the exit code.
    // One that was interrupted goes on where it stopped.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
