#include "cli/variables.hpp"

#include <cstddef>

#include "cli/output/shown_text.hpp"
#include "cli/output/wrapped_text.hpp"

namespace kap::cli {

std::string helpOnVariables() {
    constexpr std::size_t kRoomForNames = 25;
    constexpr std::size_t kWidth = 80;
    std::string help = "Variables:\n";
    for (const EnvironmentVariable& variable : kVariables) {
        help += padded("  " + std::string(variable.name), kRoomForNames);
        help += wrappedBehind(variable.help, kRoomForNames, kWidth);
    }
    return help;
}

}  // namespace kap::cli
