#pragma once

#include <optional>
#include <string>
#include <string_view>

// The one-byte encodings of texts that older programs write and read.
namespace kap {

enum class CodePage : unsigned char {
    Windows1252,  // "ANSI" of western Windows
    Dos850,       // "OEM" of western Windows
};

// Every byte has its character; the five that code page 1252 leaves out are control characters.
[[nodiscard]] std::u16string decode(CodePage page, std::string_view bytes);

// nullopt when the text holds a character that the code page lacks.
[[nodiscard]] std::optional<std::string> encode(CodePage page, std::u16string_view text);

// The same with a question mark for each code unit that the code page lacks.
[[nodiscard]] std::string encodeLossy(CodePage page, std::u16string_view text);

}  // namespace kap
