#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The format gzip (RFC 1952).
namespace kap::platform {

// The same bytes on every host. Raises 429 when the host has no library for it.
[[nodiscard]] std::string compressed(std::string_view bytes);

// Absent for bytes that are not whole and right in this format, or that stand for more than
// `longest`. Raises 429 as above.
[[nodiscard]] std::optional<std::string> decompressed(std::string_view bytes, std::size_t longest);

}  // namespace kap::platform
