#pragma once

#include <iosfwd>
#include <string>

#include <kaputil/catalogue/documentation.hpp>

#include "cli/output/language.hpp"
#include "cli/output/terminal.hpp"

// Documentation as people read it on a terminal, between words cut to its width.
namespace kap::cli {

// A text of the documentation, indented.
void printParagraph(std::ostream& out, const std::string& text, std::size_t indent,
                    const Terminal& terminal);

// A script as it stands, indented; nothing when it is empty.
void printScript(std::ostream& out, std::string_view title, const std::string& script,
                 std::size_t indent, const Terminal& terminal);

// Everything that is told of a member.
void printDocumentation(std::ostream& out, const Documentation& documentation, std::size_t indent,
                        Language language, const Terminal& terminal);

}  // namespace kap::cli
