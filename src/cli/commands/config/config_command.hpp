#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/config/configuration.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// `kaputil config`: looks at the configuration of groups of users and carries it from one place to
// another. Each command gives back its exit code; what it finds goes to standard output.

// `config show`: the tree of a group, with what is in force and what it overrules.
struct ConfigShow {
    ConfigurationSource source;
    std::string group;
    bool json = false;

    [[nodiscard]] int run() const;
};

// `config diff`: where groups differ.
struct ConfigDiff {
    ConfigurationSource source;
    std::vector<std::string> groups;  // two or more
    bool json = false;
    bool html = false;
    Language language = Language::Italian;

    // Throws UsageError when there is nothing to compare.
    [[nodiscard]] int run() const;
};

// `config groups`: which groups there are, and how much is their own.
struct ConfigGroups {
    ConfigurationSource source;
    bool json = false;

    [[nodiscard]] int run() const;
};

// `config declared`: what a program declares against the rows of all groups.
struct ConfigDeclared {
    ConfigurationSource source;  // its declaration is given
    bool json = false;

    // 4 when a row would end the program's load.
    [[nodiscard]] int run() const;
};

// `config export`: the rows of a group as a text file that `config import` reads.
struct ConfigExport {
    ConfigurationSource source;
    std::string group;
    std::optional<std::string> file;  // none: standard output
    bool json = false;

    [[nodiscard]] int run() const;
};

// `config import`: writes a text file into the rows of a group, all of it or nothing.
struct ConfigImport {
    ConfigurationSource source;
    std::string group;
    std::optional<std::string> file;  // none: standard input
    bool replace = false;             // the group's other rows go
    bool json = false;

    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
