#pragma once

#include <cstddef>
#include <string_view>

#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

// Profile files ("INI files"): sections in brackets, and in each lines of a key, '=' and a value.
//
// Names of sections and keys are compared ignoring case, without the blanks around them. A file
// name without a folder means a file in the folder of the user's settings. Files are in the user's
// ANSI code page (1252), which is what programs on Windows read and write, unless a mark at the
// beginning says UTF-8 or UTF-16; they stay as they are, with any line ends.
namespace kap::platform {

// The value of a key without the blanks and the pair of quotes around it, cut to one character less
// than `capacity`. `otherwise`, without the blanks behind it, when the file, the section or the key
// is not there, or the file cannot be read.
[[nodiscard]] KAPUTIL_EXPORT String readProfile(std::u16string_view section,
                                                std::u16string_view key,
                                                std::u16string_view otherwise, std::size_t capacity,
                                                std::u16string_view file);

// Writes a key in its place, or at the end of its section, or in a new section at the end of the
// file, which is made when it is missing. Everything else in the file stays as it is: comments,
// order, line ends, lines that are damaged. Other processes see the file before or after the
// change, and two that write at once both succeed.
//
// False, and nothing written, when a name or the value cannot stand in such a file (line breaks,
// '=' in a key, characters that the file's encoding lacks) or the file cannot be written.
[[nodiscard]] KAPUTIL_EXPORT bool writeProfile(std::u16string_view section, std::u16string_view key,
                                               std::u16string_view value, std::u16string_view file);

// The same, raising why it cannot be written: 5 for a name or a value that cannot stand in such a
// file, or the file-system object's errors.
KAPUTIL_EXPORT void changeProfile(std::u16string_view section, std::u16string_view key,
                                  std::u16string_view value, std::u16string_view file);

}  // namespace kap::platform
