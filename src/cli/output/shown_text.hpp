#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 text as it stands in a line of output: in the columns that a terminal gives its characters,
// nothing in it that moves the cursor.
namespace kap::cli {

// The text with every control character shown by its picture ("␊" for a line feed), so that data
// can neither break a table nor command the terminal.
[[nodiscard]] std::string shownText(std::string_view utf8);

// The columns that the text takes: wide characters two, combining marks none.
[[nodiscard]] std::size_t columnsOf(std::string_view utf8) noexcept;

// The text when it fits in `columns` (at least 1), otherwise its beginning and "…".
[[nodiscard]] std::string cutTo(std::string_view utf8, std::size_t columns);

// The text with blanks behind (`padded`) or in front (`rightAligned`) up to `columns`.
[[nodiscard]] std::string padded(std::string_view utf8, std::size_t columns);
[[nodiscard]] std::string rightAligned(std::string_view utf8, std::size_t columns);

}  // namespace kap::cli
