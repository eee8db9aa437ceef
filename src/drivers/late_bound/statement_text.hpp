#pragma once

#include <string>

#include "data/driver.hpp"

// The statements that write and read single rows, with their values as literals.
namespace kap::ado::late_bound {

// INSERT, UPDATE or DELETE.
[[nodiscard]] std::string writingText(const RowChange& change);

// The SELECT of what is to be read back from the row as it stands after the change.
[[nodiscard]] std::string readingText(const RowChange& change);

// A text in quotes.
[[nodiscard]] std::string textLiteral(const std::string& text);

}  // namespace kap::ado::late_bound
