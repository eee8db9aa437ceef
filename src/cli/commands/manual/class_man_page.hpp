#pragma once

#include <string>

#include "cli/commands/classes/class_lookup.hpp"
#include "cli/output/language.hpp"

namespace kap::cli {

// The name of a class's page: "kaputil-CSQL", in section 3.
[[nodiscard]] std::string manName(const ShownClass& shown);

// The page on a class with all its members, as man reads it.
[[nodiscard]] std::string manPage(const ShownClass& shown, Language language);

}  // namespace kap::cli
