#pragma once

#include <optional>
#include <string>
#include <string_view>

// The format gzip (RFC 1952, and RFC 1951 for what stands in it).
namespace kap::engine::gzip {

[[nodiscard]] std::string compressed(std::string_view bytes);

// Absent for bytes that are not whole and right in this format, or that stand for more than
// `longest`.
[[nodiscard]] std::optional<std::string> decompressed(std::string_view bytes, std::size_t longest);

}  // namespace kap::engine::gzip
