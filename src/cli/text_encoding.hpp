#pragma once

#include <cstdint>
#include <string>

namespace kap::cli {

// How the bytes of a file stand for characters.
enum class TextEncoding : std::uint8_t { Utf8, Utf16, Windows1252, Dos850 };

// What a text of bytes is: UTF-8 or UTF-16 where a mark at its beginning says so, UTF-16 when every
// other byte of its beginning is zero, UTF-8 when it is, else code page 1252.
[[nodiscard]] TextEncoding encodingOf(const std::string& bytes);

// The encoding of that name (utf-8, utf-16, 1252, 850).
[[nodiscard]] TextEncoding encodingNamed(const std::string& name);

// The bytes as UTF-8, without the mark. Throws UsageError naming `file`, and the line, for bytes
// that the encoding does not have.
[[nodiscard]] std::string decoded(std::string bytes, TextEncoding encoding,
                                  const std::string& file);

}  // namespace kap::cli
