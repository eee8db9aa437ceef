#pragma once

#include <optional>
#include <string>

#include "cli/language_option.hpp"

namespace kap::cli {

// `kaputil manual`: the pages for man, made from the table of commands and from the classes.
struct ManualCommand {
    std::string command;                // "sql", "CSQL"; empty: the page on all commands
    std::optional<std::string> folder;  // writes every page there instead
    Language language = userLanguage();

    // Prints the page, or writes kaputil.1, kaputil-sql.1, kaputil-CSQL.3 and so on. Throws
    // UsageError.
    [[nodiscard]] int run() const;
};

// `kaputil completion`: the script that completes the command line in a shell.
struct CompletionCommand {
    std::string shell;  // zsh, fish
    Language language = userLanguage();

    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
