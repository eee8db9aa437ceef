#include <cstdint>
#include <random>
#include <string>
#include <utility>

#include "base/ascii.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/message_text.hpp"
#include "platform/digest.hpp"
#include "platform/gzip/gzip.hpp"
#include "tsql/server_error.hpp"

// Digests, compressed and random bytes, and the texts of messages.
namespace kap::engine {

namespace {

using platform::DigestKind;

constexpr std::size_t kMostDigested = 8000;

// kap_hashbytes(algorithm, bytes); NULL for an algorithm that the server does not know.
Value hashBytes(const Arguments& arguments) {
    static constexpr std::pair<std::string_view, DigestKind> kAlgorithms[] = {
        {"MD2", DigestKind::Md2},         {"MD4", DigestKind::Md4},
        {"MD5", DigestKind::Md5},         {"SHA", DigestKind::Sha1},
        {"SHA1", DigestKind::Sha1},       {"SHA2_256", DigestKind::Sha256},
        {"SHA2_512", DigestKind::Sha512},
    };
    const std::string bytes = arguments.blob(1).bytes;
    if (bytes.size() > kMostDigested) {
        throw tsql::ServerError(tsql::Message::Truncated);
    }
    for (const auto& [name, kind] : kAlgorithms) {
        if (equalsIgnoringCase(name, arguments.text(0))) {
            return Blob{platform::digestOf(kind, bytes)};
        }
    }
    return {};
}

// kap_random_bytes(count); NULL for a count that is out of bounds.
Value randomBytes(const Arguments& arguments) {
    const std::int64_t count = arguments.integer(0);
    if (count < 1 || count > static_cast<std::int64_t>(kMostDigested)) return {};
    thread_local std::random_device source;
    std::string bytes;
    for (std::int64_t i = 0; i < count; ++i)
        bytes += static_cast<char>(source() & 0xFFU);
    return Blob{std::move(bytes)};
}

// kap_compress(bytes), kap_decompress(bytes)
Value compressBytes(const Arguments& arguments) {
    return Blob{platform::compressed(arguments.blob(0).bytes)};
}

Value decompressBytes(const Arguments& arguments) {
    constexpr std::size_t kLongest = 1000000000;  // that a value may be
    auto bytes = platform::decompressed(arguments.blob(0).bytes, kLongest);
    if (!bytes) {
        throw tsql::ServerError(tsql::Message::InvalidParameterOfFunction, {"1", "decompress"});
    }
    return Blob{std::move(*bytes)};
}

// kap_formatmessage(pattern, values...): numbers are whole ones.
Value formatMessage(const Arguments& arguments) {
    if (arguments.isNull(0)) return {};
    std::vector<MessageArgument> values;
    for (int i = 1; i < arguments.count(); ++i) {
        const bool null = arguments.isNull(i);
        values.push_back({null ? std::string() : std::string(arguments.text(i)),
                          arguments.kind(i) == SQLITE_INTEGER, null});
    }
    return messageText(arguments.text(0), values);
}

}  // namespace

void registerDigestFunctions(Registrar& registrar) {
    registrar.scalar("kap_hashbytes", 2, hashBytes);
    registrar.scalar("kap_compress", 1, compressBytes);
    registrar.scalar("kap_decompress", 1, decompressBytes);
    registrar.scalar("kap_random_bytes", 1, randomBytes, OnNull::GiveNull, Stability::PerCall);
    registrar.scalar("kap_formatmessage", -1, formatMessage, OnNull::Call);
}

}  // namespace kap::engine
