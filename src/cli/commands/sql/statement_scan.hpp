#pragma once

#include <string_view>

namespace kap::cli {

// What a text that is being typed is as a script so far.
struct ScannedScript {
    bool open = false;      // it ends within a text, a quoted name or a comment
    bool finished = false;  // its last line ends with ';', outside of blocks and programs
    bool empty = true;      // there is nothing but blanks and comments
};
[[nodiscard]] ScannedScript scanned(std::string_view script);

// What the text, quoted name or comment ends with in which a line of a script ends; empty outside
// of them. `before` is the same of the line before.
[[nodiscard]] std::string_view openBehind(std::string_view line, std::string_view before);

// Whether a line holds nothing but GO, perhaps with a count.
[[nodiscard]] bool isGo(std::string_view line);

}  // namespace kap::cli
