#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kap::engine {

// The parts of a text between separators, as STRING_SPLIT gives them. Error 214 for a separator
// that is not one character.
[[nodiscard]] std::vector<std::string> splitText(std::string_view text, std::string_view separator);

}  // namespace kap::engine
