#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kap::platform {

enum class DigestKind : std::uint8_t { Md2, Md4, Md5, Sha1, Sha256, Sha512 };

// The digest of bytes: 16 bytes of the first three kinds, then 20, 32 and 64. Raises an error of
// the host when it refuses to compute one of that kind.
[[nodiscard]] std::string digestOf(DigestKind kind, std::string_view bytes);

}  // namespace kap::platform
