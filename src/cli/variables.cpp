#include "cli/variables.hpp"

#include <cstddef>

#include "cli/output/help_words.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/wrapped_text.hpp"

namespace kap::cli {

std::string helpOnVariables(Language language) {
    constexpr std::size_t kRoomForNames = 25;
    constexpr std::size_t kWidth = 80;
    std::string help = std::string(helpWords(language).variables) + ":\n";
    for (const EnvironmentVariable& variable : kVariables) {
        help += padded("  " + std::string(variable.name), kRoomForNames);
        help += wrappedBehind(helpOn(variable, language), kRoomForNames, kWidth);
    }
    return help;
}

}  // namespace kap::cli
