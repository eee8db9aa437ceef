#pragma once

#include <string>

namespace kap::cli {

// What is wrong with a table's name that stands in a statement as it was typed: empty for one to
// four parts with points between them, each a name as the dialect writes it (letters, digits, _ @ #
// $, none of the digits or $ first) or anything in brackets or double quotes.
[[nodiscard]] std::string tableNameFault(const std::string& name);

}  // namespace kap::cli
