#pragma once

#include <string>
#include <vector>

#include "cli/command.hpp"

namespace kap::cli {

// How an option is typed: its names with dashes, and what stands for it by its place; "DATABASE,
// --connection" has both.
struct OptionWords {
    std::vector<std::string> names;  // "--file"
    std::string place;               // "FILE"; empty: it has none
    std::vector<std::string> texts;  // the few texts that it takes, where they are named
    bool takesText = false;
    bool takesFile = false;
    bool takesFolder = false;
    bool takesClass = false;   // the name of a class, or CLASS.MEMBER
    bool takesMember = false;  // what can be called: a general function or CLASS.MEMBER
};

[[nodiscard]] OptionWords wordsOf(const Option& option);

}  // namespace kap::cli
