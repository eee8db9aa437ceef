#include "platform/gzip/zlib.hpp"

#include "platform/loaded_library.hpp"

namespace kap::platform {
namespace {

// Loaded with the first value that is compressed.
constexpr LoadedLibrary kZlib("libz.so.1");

template <class Function>
void find(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(kZlib.find(name));
}

Zlib loaded() {
    Zlib found{};
    find(found.beginDeflating, "deflateInit2_");
    find(found.deflateSetHeader, "deflateSetHeader");
    find(found.deflate, "deflate");
    find(found.deflateEnd, "deflateEnd");
    find(found.beginInflating, "inflateInit2_");
    find(found.inflate, "inflate");
    find(found.inflateReset, "inflateReset");
    find(found.inflateEnd, "inflateEnd");
    return found;
}

}  // namespace

const Zlib& zlib() {
    static const Zlib found = loaded();
    return found;
}

}  // namespace kap::platform
