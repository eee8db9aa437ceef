#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/commands/numbers/register_words.hpp"

namespace kap::cli {

// `kaputil numbers`: the register of document numbers, with what accountants ask about it.
struct NumbersCommand {
    std::string connection;
    std::optional<std::string> counter;
    std::optional<int> year;
    std::optional<std::int64_t> from;
    std::optional<std::int64_t> to;
    bool everyNumber = false;
    bool failOnAnomalies = false;
    bool json = false;
    bool csv = false;
    bool html = false;
    Language language = Language::Italian;
    std::optional<std::string> output;  // the file to write; without it, the standard output

    // Gives back the exit code.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
