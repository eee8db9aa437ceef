#pragma once

#include <optional>
#include <string>

#include "cli/commands/numbers/register_words.hpp"

namespace kap::cli {

// `kaputil describe`: shows what a database is made of.
struct DescribeCommand {
    std::string connection;
    std::optional<std::string> table;
    bool json = false;
    bool html = false;
    Language language = Language::Italian;
    std::optional<std::string> output;

    // Gives back the exit code.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
