#pragma once

#include <cstddef>
#include <string_view>

namespace kap::unicode {

// A character at the beginning of a text: how many bytes of UTF-8 it has, and how many columns a
// terminal gives it: 2 for the wide ones of East Asia and pictures, 0 for marks that combine with
// the character before them, else 1.
struct MeasuredCharacter {
    std::size_t bytes = 0;
    std::size_t columns = 0;
};

// The first character of a text that is not empty. A byte that is no UTF-8 is one column.
[[nodiscard]] MeasuredCharacter firstCharacter(std::string_view utf8) noexcept;

}  // namespace kap::unicode
