#pragma once

#include <optional>
#include <string>

#include "cli/commands/config/configuration.hpp"

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

// `config diff`: where two groups differ.
struct ConfigDiff {
    ConfigurationSource source;
    std::string first;
    std::string second;
    bool json = false;

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
