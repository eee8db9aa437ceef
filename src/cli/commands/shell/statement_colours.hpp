#pragma once

#include <string>
#include <string_view>

#include "cli/output/terminal.hpp"

namespace kap::cli {

// A line of a statement with its key words, texts, numbers and comments in colours. `before` are
// the statement's lines above it, in which a text or comment may have begun.
[[nodiscard]] std::string colouredLine(std::string_view before, std::string_view line,
                                       const Terminal& terminal);

}  // namespace kap::cli
