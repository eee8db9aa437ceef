#pragma once

#include <string>
#include <string_view>
#include <vector>

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

// What the pages of the reference look like beside what all pages do; after sunset, too.
inline constexpr std::string_view kReferenceStyles = R"css(
h1, h2 { overflow-wrap: anywhere; }
tbody th { background: none; font-weight: 400; white-space: nowrap; width: 1%; }
a:focus-visible, input:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
:root { --link: #1f5fa8; }
a { color: var(--link); }
@media screen and (prefers-color-scheme: dark) {
  :root { color-scheme: dark; --ink: #e3e8ee; --soft: #9aa7b5; --line: #344150; --paper: #151b22; --band: #1f2833; --link: #7db3f0; }
}
)css";

// Every class that has a page.
[[nodiscard]] std::vector<const ShownClass*> pagedClasses();

}  // namespace kap::cli
