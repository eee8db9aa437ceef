#include "platform/digest.hpp"

#include <nettle/nettle-meta.h>

#include <vector>

#include "platform/loaded_library.hpp"

namespace kap::platform {
namespace {

// Loaded with the first digest.
constexpr LoadedLibrary kNettle("libnettle.so.8");

const char* nameOf(DigestKind kind) {
    switch (kind) {
        case DigestKind::Md2:
            return "nettle_md2";
        case DigestKind::Md4:
            return "nettle_md4";
        case DigestKind::Md5:
            return "nettle_md5";
        case DigestKind::Sha1:
            return "nettle_sha1";
        case DigestKind::Sha256:
            return "nettle_sha256";
        case DigestKind::Sha512:
            break;
    }
    return "nettle_sha512";
}

}  // namespace

std::string digestOf(DigestKind kind, std::string_view bytes) {
    const auto& algorithm = *static_cast<const nettle_hash*>(kNettle.find(nameOf(kind)));
    // The state holds whole numbers of 64 bits at most.
    std::vector<std::uint64_t> state(algorithm.context_size / sizeof(std::uint64_t) + 1);
    std::string digest(algorithm.digest_size, '\0');
    algorithm.init(state.data());
    algorithm.update(state.data(), bytes.size(),
                     reinterpret_cast<const std::uint8_t*>(bytes.data()));
    algorithm.digest(state.data(), digest.size(), reinterpret_cast<std::uint8_t*>(digest.data()));
    return digest;
}

}  // namespace kap::platform
