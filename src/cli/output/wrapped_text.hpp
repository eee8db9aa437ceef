#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kap::cli {

// The text cut into lines between words, each indented by `indent` blanks and at most `width`
// columns wide (a longer word stands alone on its line); each line ends with a line feed. A width
// of 0 stands for lines as long as they are: one line.
[[nodiscard]] std::string wrapped(std::string_view utf8, std::size_t indent, std::size_t width);

// The same text behind something that already fills the first line up to `indent`.
[[nodiscard]] std::string wrappedBehind(std::string_view utf8, std::size_t indent,
                                        std::size_t width);

}  // namespace kap::cli
