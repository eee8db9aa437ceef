#pragma once

#include <string>
#include <string_view>

#include "cli/output/language.hpp"

// What the help and the pages of the manual say around the texts of the command table.
namespace kap::cli {

struct HelpWords {
    std::string_view program;  // what the command line is
    std::string_view usage;
    std::string_view options;
    std::string_view anyOptions;  // in the place of options in a line of usage
    std::string_view words;
    std::string_view commands;
    std::string_view anyCommand;
    std::string_view required;
    std::string_view apart;
    std::string_view helpOption;
    std::string_view versionOption;
    std::string_view variables;
    std::string_view manName;
    std::string_view manSynopsis;
    std::string_view manDescription;
    std::string_view manCommands;
    std::string_view manOptions;
    std::string_view manEnvironment;
    std::string_view manRequired;
    std::string_view manSeeAlso;
};

[[nodiscard]] const HelpWords& helpWords(Language language);

// What stands for a text in the help: "FOLDER", in Italian "CARTELLA".
[[nodiscard]] std::string placeholderIn(const std::string& placeholder, Language language);

}  // namespace kap::cli
