#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace kap::sqlscript {

inline constexpr std::u16string_view kLineEnd = u"\r\n";

// Appends one line made of these pieces.
void appendLine(std::u16string& script, std::initializer_list<std::u16string_view> pieces);

// Appends the lines that leave the script when the statement before them failed, and an empty one.
void appendCheck(std::u16string& script);

// The script that runs `body` as one transaction, as a call of the procedure that runs a text.
[[nodiscard]] std::u16string callOf(std::u16string_view body);

}  // namespace kap::sqlscript
