#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kap::platform {

// How the text of a file is encoded.
enum class TextEncoding : unsigned char {
    Utf8,
    Utf8Marked,   // with the byte order mark in front
    Utf16Marked,  // little-endian, with the mark
    Windows1252,
};

// What the bytes of a file are: UTF-16 or UTF-8 by their mark, UTF-8 when they are valid as such,
// code page 1252 otherwise.
[[nodiscard]] TextEncoding encodingOf(std::string_view bytes) noexcept;

// What the bytes of a file are that programs on Windows read and write, too: profile files, and the
// schema files beside exported texts. UTF-16 or UTF-8 by their mark, and without one the user's
// ANSI code page, which is 1252 for every locale that the library knows: those programs take UTF-8
// without a mark for it and show two wrong letters for every accent.
[[nodiscard]] TextEncoding sharedEncodingOf(std::string_view bytes) noexcept;

// The text without its mark, and the other way round. Decoding with the encoding that `encodingOf`
// tells loses nothing. Encoding gives nullopt for a character that the encoding lacks.
[[nodiscard]] std::u16string decodeText(TextEncoding encoding, std::string_view bytes);
[[nodiscard]] std::optional<std::string> encodeText(TextEncoding encoding,
                                                    std::u16string_view text);

// UTF-16 as its bytes, the lower one first, and the other way round; an odd byte at the end is left
// out.
[[nodiscard]] std::string utf16Bytes(std::u16string_view text);
[[nodiscard]] std::u16string fromUtf16Bytes(std::string_view bytes);

}  // namespace kap::platform
