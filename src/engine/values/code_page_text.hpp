#pragma once

#include <string>
#include <string_view>

// Texts of the types without N, whose letters are those of the Western European code page.
namespace kap::engine {

// The text with a question mark for each code unit that the code page lacks.
[[nodiscard]] std::string inCodePage(std::string text);

// The bytes of such a text, and the text of such bytes.
[[nodiscard]] std::string codePageBytes(std::string_view text);
[[nodiscard]] std::string codePageText(std::string_view bytes);

}  // namespace kap::engine
