#pragma once

#include <optional>
#include <string>

namespace kap::tools {

// `kaputil numbers`: shows the counters of documents with what accountants ask about them.
struct NumbersCommand {
    std::string connection;
    std::optional<std::string> counter;
    std::optional<int> year;
    bool json = false;

    // Gives back the exit code.
    [[nodiscard]] int run() const;
};

}  // namespace kap::tools
