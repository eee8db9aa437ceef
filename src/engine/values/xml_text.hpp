#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// XML as text: what is escaped, names, paths.
namespace kap::engine {

// A text as the content of an element, or as the value of an attribute between double quotes.
// `strict`: error 6841, which names `node`, for characters that XML does not have; else they are
// written by their numbers.
[[nodiscard]] std::string xmlContent(std::string_view text, bool strict, std::string_view node);
[[nodiscard]] std::string xmlAttribute(std::string_view text, bool strict, std::string_view node);

// Any text as a name: characters that no name has become _x0020_.
[[nodiscard]] std::string xmlName(std::string_view text);

// Error 6850 for a text that is no name, 6846 for a prefix that nothing declares; `kind` is
// "Column", "Row tag" or "Root tag", and `whole` what the message shows.
void checkXmlName(std::string_view name, std::string_view kind, std::string_view whole);

// What the name of a column means to FOR XML PATH: 'a/b/@c'.
struct XmlPath {
    enum class Leaf { Content, Text, Data, Attribute, Comment, Instruction };
    std::vector<std::string> steps;  // the elements around, the outermost first
    Leaf leaf = Leaf::Content;
    std::string name;  // of the attribute or the instruction
};

// Errors 6846, 6850 and 6854.
[[nodiscard]] XmlPath xmlPath(std::string_view name);

// The value at a path of XML that FOR XML has made: "." is all its text, "text()[1]" the first text
// outside of elements, which may not be there. Error 40517 for any other path.
[[nodiscard]] std::optional<std::string> xmlValueAt(std::string_view xml, std::string_view path);

}  // namespace kap::engine
