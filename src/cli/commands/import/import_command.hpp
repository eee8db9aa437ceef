#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <kaputil/ado/connection.hpp>

namespace kap::cli {

// `kaputil import`: the rows of a file of delimited values into a table, all of them or none.
struct ImportCommand {
    std::string connection;  // see connectionTextOf()
    std::string table;
    std::string file;                      // empty or "-": standard input
    std::optional<std::string> delimiter;  // one character, or "tab"; unset: found
    std::string quote = "\"";              // one character; empty: there are no quotes
    std::optional<std::string> encoding;   // unset: found
    std::optional<std::string> locale;     // unset: numbers and dates as programs write them
    std::optional<std::string> columns;    // with commas; unset: as the first line says
    bool noHeader = false;                 // the first line is a row
    std::string null;                      // the text that stands for Null when it is not quoted
    std::uint64_t mostErrors = 20;         // that are told before it is given up
    bool dryRun = false;
    bool json = false;

    // Imports, and gives back the exit code. Errors go to standard error, each with the row and the
    // column that it is about. Throws UsageError.
    [[nodiscard]] int run() const;
    // The same on a database that is open. Raises its errors that are about no row.
    [[nodiscard]] int runOn(ado::Connection& database) const;
};

}  // namespace kap::cli
