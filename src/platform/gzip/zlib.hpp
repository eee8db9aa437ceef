#pragma once

#include <zlib.h>

namespace kap::platform {

// The functions of the library that compresses, under their own names where its header has no macro
// of that name.
struct Zlib {
    decltype(&::deflateInit2_) beginDeflating;
    decltype(&::deflateSetHeader) deflateSetHeader;
    decltype(&::deflate) deflate;
    decltype(&::deflateEnd) deflateEnd;
    decltype(&::inflateInit2_) beginInflating;
    decltype(&::inflate) inflate;
    decltype(&::inflateReset) inflateReset;
    decltype(&::inflateEnd) inflateEnd;
};

// Raises 429 when the host does not have it.
[[nodiscard]] const Zlib& zlib();

}  // namespace kap::platform
