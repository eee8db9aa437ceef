#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kap::cli {

// A line of comma-separated values as RFC 4180 has it: a text with a comma, a quote or the end of a
// line in it stands in quotes, and the line ends in CR LF.
[[nodiscard]] std::string csvLine(const std::vector<std::string>& values);

// Puts the text from `start` to the end of a line in quotes where one of these is in it.
void quoteForCsv(std::string& line, std::size_t start);

}  // namespace kap::cli
