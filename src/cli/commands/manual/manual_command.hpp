#pragma once

#include <optional>
#include <string>

namespace kap::cli {

// `kaputil manual`: the pages for man, made from the table of commands.
struct ManualCommand {
    std::string command;                // "sql"; empty: the page on all of them
    std::optional<std::string> folder;  // writes every page there instead

    // Prints the page, or writes kaputil.1, kaputil-sql.1 and so on. Throws UsageError.
    [[nodiscard]] int run() const;
};

// `kaputil completion`: the script that completes the command line in a shell.
struct CompletionCommand {
    std::string shell;  // zsh, fish

    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
