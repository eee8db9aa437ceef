#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The encodings of a stream's text, by the names that programs give them.
namespace kap::ado {

enum class TextCharset : std::uint8_t {
    Utf16,
    Utf16Big,
    Utf8,
    Ascii,
    Latin1,
    Latin9,
    Windows1252,
    Dos850
};

// Names are compared ignoring case; nullopt for one that is not known.
[[nodiscard]] std::optional<TextCharset> charsetNamed(std::u16string_view name);

// What a text of this encoding begins with; empty: nothing.
[[nodiscard]] std::string_view markOf(TextCharset charset) noexcept;

// The length in bytes of the character that begins at `at`, no more than what is there. Of UTF-16 a
// character is one unit.
[[nodiscard]] std::size_t characterLength(TextCharset charset, std::string_view bytes,
                                          std::size_t at) noexcept;

// What cannot be decoded becomes U+FFFD, what cannot be encoded a question mark.
[[nodiscard]] std::u16string decodeText(TextCharset charset, std::string_view bytes);
[[nodiscard]] std::string encodeText(TextCharset charset, std::u16string_view text);

}  // namespace kap::ado
