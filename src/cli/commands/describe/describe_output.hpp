#pragma once

#include <iosfwd>
#include <string>

#include <kaputil/automation/variant.hpp>

#include "cli/commands/describe/database_facts.hpp"
#include "cli/commands/numbers/register_words.hpp"
#include "cli/output/terminal.hpp"

// What `kaputil describe` writes, in its three forms.
namespace kap::cli {

void printFacts(std::ostream& out, const DatabaseFacts& facts, const Terminal& terminal);
void printFactsJson(std::ostream& out, const DatabaseFacts& facts);
// One page that stands by itself, with a drawing of who refers to whom. `source` names the
// database, `time` is when it was read.
void printFactsHtml(std::ostream& out, const DatabaseFacts& facts, Language language,
                    const std::string& source, Date time);

}  // namespace kap::cli
