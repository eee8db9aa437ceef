#include "platform/gzip/zlib.hpp"

namespace kap::platform {

// Part of the library here: the host has none.
const Zlib& zlib() {
    static constexpr Zlib kLinked{::deflateInit2_, ::deflateSetHeader, ::deflate,
                                  ::deflateEnd,    ::inflateInit2_,    ::inflate,
                                  ::inflateReset,  ::inflateEnd};
    return kLinked;
}

}  // namespace kap::platform
