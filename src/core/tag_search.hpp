#pragma once

#include <optional>
#include <string>
#include <string_view>

// What the operations on a property string mean, on the plain text. Each looks through the whole
// text; TaggedText gives the same answers without that for the names that occur in practice.
namespace kap::tagsearch {

// The characters between the first "<name>" and the first "</name>"; nullopt without the former.
// Raises 5 when the latter is absent or comes first.
[[nodiscard]] std::optional<std::u16string> read(std::u16string_view text,
                                                 std::u16string_view name);

// The text with the value of a name replaced, or with the name appended. Raises 5 when the name is
// never closed. Every other empty occurrence of the name receives the value too: programs count on
// it.
[[nodiscard]] std::u16string write(std::u16string_view text, std::u16string_view name,
                                   std::u16string_view value);

// The text without the first occurrence of a name. One that is never closed takes everything up to
// the length of its closing tag with it and leaves the text from there on after it, as the
// arithmetic on positions has always done.
[[nodiscard]] std::u16string erase(std::u16string_view text, std::u16string_view name);

}  // namespace kap::tagsearch
