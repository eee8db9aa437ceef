#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/output/language.hpp"

// A command as the command line and its help know it. Each command's folder makes one; what reads
// the arguments is in command_reader.cpp alone.
namespace kap::cli {

// Where what was typed for an option goes. A flag (bool, a function without a text) has no text;
// texts of numbers are checked.
using OptionTarget =
    std::variant<bool*, std::string*, std::optional<std::string>*, std::vector<std::string>*,
                 std::uint64_t*, std::optional<int>*, std::optional<std::int64_t>*,
                 std::function<void(const std::string&)>, std::function<void()>>;

// An option ("--file"), or a word known by its place ("FILE").
struct Option {
    std::string name = {};
    std::string placeholder = {};  // of its text, in the help; empty for flags and words by place
    OptionTarget target = {};
    BothLanguages help = {};
    bool required = false;
    bool showsDefault = false;            // the help tells what the target holds before
    std::vector<std::string> apart = {};  // options that it cannot be given with
    // Why a text is refused; empty when it is not.
    std::function<std::string(const std::string&)> fault = nullptr;
};

struct CommandDescription {
    std::string name = {};
    BothLanguages summary = {};
    BothLanguages details = {};  // stands below the options in the help
    std::vector<Option> options = {};
    std::function<int()> run = nullptr;  // gives the exit code; none where an action must be named
    std::vector<CommandDescription> actions = {};  // "list" of "kaputil registry list"
    // Words that are no options go here exactly as they were typed; null: words are as declared.
    std::vector<std::string>* words = nullptr;
};

// An option whose text must be one of these words.
[[nodiscard]] std::function<std::string(const std::string&)> oneOf(std::vector<std::string> words);

}  // namespace kap::cli
