#pragma once

#include <string>

#include "cli/commands/describe/database_facts.hpp"
#include "cli/commands/numbers/register_words.hpp"

namespace kap::cli {

// A drawing (SVG) of which tables refer to which by foreign keys: what is referred to stands above,
// with a line from each table that refers to it. Tables that have no part in this are left out; the
// text is empty when that is all of them. Each table is a link to "#t-" and its name.
[[nodiscard]] std::string relationDrawing(const DatabaseFacts& facts, Language language);

[[nodiscard]] std::string_view drawingStyles();

}  // namespace kap::cli
