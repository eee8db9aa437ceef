#pragma once

#include <string>
#include <string_view>

// Texts between signs of which the closing one is doubled wherever it stands within: the constants
// and names of SQL, the values of connection strings, the fields of text files.
namespace kap {

// Appends a text with every such sign in it doubled.
void appendDoubling(std::string& text, std::string_view more, char sign);
void appendDoubling(std::u16string& text, std::u16string_view more, char16_t sign);

// A text between two signs; the closing one is doubled in it.
[[nodiscard]] std::string enclosed(std::string_view text, char open, char close);
[[nodiscard]] std::u16string enclosed(std::u16string_view text, char16_t open, char16_t close);

// 'a constant', N'a national one', "a name" and [a name].
[[nodiscard]] inline std::string textConstant(std::string_view text) {
    return enclosed(text, '\'', '\'');
}
[[nodiscard]] inline std::string nationalConstant(std::string_view text) {
    return "N" + textConstant(text);
}
[[nodiscard]] inline std::string inQuotes(std::string_view text) {
    return enclosed(text, '"', '"');
}
[[nodiscard]] inline std::string inBrackets(std::string_view text) {
    return enclosed(text, '[', ']');
}

}  // namespace kap
