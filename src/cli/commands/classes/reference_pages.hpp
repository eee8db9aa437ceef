#pragma once

#include <string>

#include "cli/commands/classes/class_lookup.hpp"
#include "cli/output/language.hpp"

// The reference as pages for a browser: a page a class in both languages, below `it` and `en`, and
// an index of each language with a box to search in. Every page is one file with all that it needs
// in it; they are read from a folder as well as from a server.
namespace kap::cli {

// Writes all pages into a folder, which is made when it is missing. Raises what writing raises.
void writeReference(const std::string& folder);

// The page of a class, and the index of all pages.
[[nodiscard]] std::string classPage(const ShownClass& shown, Language language);
[[nodiscard]] std::string indexPage(Language language);

// Every class that has a page.
[[nodiscard]] std::vector<const ShownClass*> pagedClasses();

}  // namespace kap::cli
