#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kap::tsql {

[[nodiscard]] constexpr bool isAsciiDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool isAsciiLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// Upper case of the letters A-Z only: keywords and type names are plain Latin in every language.
[[nodiscard]] std::string asciiUpper(std::string_view text);

/// Lower case of the letters A-Z only.
[[nodiscard]] std::string asciiLower(std::string_view text);

/// The plain decimal digits of a whole number, whatever the locale.
[[nodiscard]] std::string integerText(std::int64_t value);

/// Equality that ignores the case of the letters A-Z.
[[nodiscard]] bool equalsIgnoringCase(std::string_view left, std::string_view right);

}  // namespace kap::tsql
