#pragma once

#include <optional>
#include <string>

#include "cli/language_option.hpp"

namespace kap::cli {

// `kaputil classes`: the catalogue as an object browser shows it.
struct ClassesCommand {
    std::string name;    // of a class, CLASS.MEMBER, or an enumeration; empty: the whole table
    bool names = false;  // only the names of what is below it, one a line
    bool json = false;
    Language language = userLanguage();
    std::optional<std::string> html;  // a folder: the whole reference goes there as pages

    // Prints it on standard output and gives back the exit code. Throws UsageError for a name that
    // stands for nothing.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
