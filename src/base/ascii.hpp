#pragma once

#include <string>
#include <string_view>

namespace kap {

[[nodiscard]] constexpr bool isAsciiDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool isAsciiLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Upper case of the letters A-Z only: keywords and type names are plain Latin in every language.
[[nodiscard]] std::string asciiUpper(std::string_view text);

// Lower case of the letters A-Z only.
[[nodiscard]] std::string asciiLower(std::string_view text);

// Equality that ignores the case of the letters A-Z.
[[nodiscard]] bool equalsIgnoringCase(std::string_view left, std::string_view right);

// The text without the blanks at its beginning and end.
[[nodiscard]] std::string_view trimmed(std::string_view text, std::string_view blanks);

}  // namespace kap
