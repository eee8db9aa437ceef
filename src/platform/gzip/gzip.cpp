#include "platform/gzip/gzip.hpp"

#include <array>
#include <memory>
#include <new>

#include "platform/gzip/zlib.hpp"

namespace kap::platform {
namespace {

constexpr int kGzip = 16 + MAX_WBITS;  // the format, with the largest window
constexpr std::size_t kBuffer = 65536;

// Ends a stream of the library with the scope.
using Ending = std::unique_ptr<z_stream, int (*)(z_stream*)>;

z_stream streamOf(std::string_view bytes) {
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));  // only read
    stream.avail_in = static_cast<uInt>(bytes.size());
    return stream;
}

// The one thing that can fail in what this library version was made for.
void requireMemory(int result) {
    if (result != Z_OK) throw std::bad_alloc();
}

// Takes a step, and what it has made behind `result`.
int step(int (*work)(z_stream*, int), z_stream& stream, int flush, std::string& result) {
    std::array<char, kBuffer> made;
    stream.next_out = reinterpret_cast<Bytef*>(made.data());
    stream.avail_out = static_cast<uInt>(made.size());
    const int answer = work(&stream, flush);
    if (answer == Z_MEM_ERROR) throw std::bad_alloc();
    result.append(made.data(), made.size() - stream.avail_out);
    return answer;
}

}  // namespace

std::string compressed(std::string_view bytes) {
    constexpr int kUsualMemory = 8;
    z_stream stream = streamOf(bytes);
    requireMemory(zlib().beginDeflating(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip,
                                        kUsualMemory, Z_DEFAULT_STRATEGY, ZLIB_VERSION,
                                        sizeof(stream)));
    const Ending ending(&stream, zlib().deflateEnd);
    gz_header header{};  // without the host's number, so that all hosts make the same bytes
    zlib().deflateSetHeader(&stream, &header);
    std::string result;
    while (step(zlib().deflate, stream, Z_FINISH, result) != Z_STREAM_END) {
    }
    return result;
}

// Several in this format one behind another stand for all of their bytes.
std::optional<std::string> decompressed(std::string_view bytes, std::size_t longest) {
    z_stream stream = streamOf(bytes);
    requireMemory(zlib().beginInflating(&stream, kGzip, ZLIB_VERSION, sizeof(stream)));
    const Ending ending(&stream, zlib().inflateEnd);
    std::string result;
    for (;;) {
        const int answer = step(zlib().inflate, stream, Z_NO_FLUSH, result);
        if ((answer != Z_OK && answer != Z_STREAM_END) || result.size() > longest) {
            return std::nullopt;
        }
        if (answer == Z_STREAM_END) {
            if (stream.avail_in == 0) return result;
            zlib().inflateReset(&stream);
        }
    }
}

}  // namespace kap::platform
