#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/command.hpp"

// Files of text that people give to a command: scripts, settings, rows.
namespace kap::cli {

// What a file may have, in bytes: one of rows, and any other.
inline constexpr std::uintmax_t kLargestRows = std::uintmax_t{2} << 30U;
inline constexpr std::uintmax_t kLargestScript = std::uintmax_t{256} << 20U;

// The bytes of a file, or of standard input for a name that is empty or "-". Throws UsageError when
// they cannot be read or are more than `most`.
[[nodiscard]] std::string bytesOfFile(const std::string& file,
                                      std::uintmax_t most = kLargestScript);

// The same as UTF-8, without the mark that the text may begin with. `encoding` is a name for
// encodingNamed(); without it the encoding is found. Throws UsageError for bytes that the encoding
// does not have.
[[nodiscard]] std::string textOfFile(const std::string& file,
                                     const std::optional<std::string>& encoding = {},
                                     std::uintmax_t most = kLargestScript);

// How messages call a file.
[[nodiscard]] std::string shownNameOf(const std::string& file);

// --encoding
[[nodiscard]] Option encodingOption(std::optional<std::string>& target);

}  // namespace kap::cli
