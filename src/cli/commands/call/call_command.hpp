#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kap::cli {

// `kaputil call`: members of the library, called by name with the arguments typed.
struct CallCommand {
    std::vector<std::string> words;         // MEMBER [ARG...] [+ MEMBER [ARG...]]...
    std::optional<std::string> locale;      // "it-IT"; none: the user's
    std::optional<std::string> messageLog;  // where message boxes are written; none: system log
    bool json = false;

    // Prints each result on standard output, the error that ends it on standard error, and gives
    // back the exit code. Throws UsageError for words that make no calls.
    [[nodiscard]] int run() const;
};

}  // namespace kap::cli
