#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace kap::cli {

// Takes the words that are no options out of `arguments` and gives them back in order, exactly as
// typed: "-2.5", "[1]" and "" are arguments like any other. Words behind "--" are none of them
// options. What is left are the options that `command` knows or must refuse, each with its value.
[[nodiscard]] std::vector<std::string> takeWords(const CLI::App& command,
                                                 std::vector<std::string>& arguments);

}  // namespace kap::cli
