#pragma once

#include <optional>
#include <string>

namespace kap::cli {

// `kaputil registry`: the user's registry, looked at and changed by hand.
struct RegistryCommand {
    enum class Action : unsigned char { List, Get, Set, Create, Delete, Import, Export };

    Action action = Action::List;
    std::string key;
    std::optional<std::string> name;  // of a value
    std::string data;                 // to set
    std::string type = "REG_SZ";      // of it
    std::string file;                 // to import; to export to, empty: standard output
    bool json = false;

    // Does it and gives back the exit code. Throws UsageError for data that does not fit its type.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
