#pragma once

#include <iosfwd>

#include "cli/commands/classes/class_lookup.hpp"
#include "cli/output/language.hpp"
#include "cli/output/terminal.hpp"

// The catalogue as people read it; on a terminal lines are cut between words to fit its width.
namespace kap::cli {

// The library, a line for each class, its enumeration, what else can be made by name, and the names
// of the enumerations of data access.
void printCatalogue(std::ostream& out, Language language, const Terminal& terminal);

// One class with all its members, one member of it, one enumeration with its values.
void printClass(std::ostream& out, const ShownClass& shown, Language language,
                const Terminal& terminal);
void printMember(std::ostream& out, const ShownClass& shown, const MemberDescription& member,
                 Language language, const Terminal& terminal);
void printEnumeration(std::ostream& out, const EnumerationDescription& enumeration,
                      Language language, const Terminal& terminal);

}  // namespace kap::cli
