#include "platform/digest.hpp"

#include <array>
#include <stdexcept>

#include <windows.h>

#include <bcrypt.h>

namespace kap::platform {
namespace {

struct Algorithm {
    const wchar_t* name;
    std::size_t bytes;
};

Algorithm algorithmOf(DigestKind kind) {
    static constexpr std::array<Algorithm, 6> kAlgorithms{{{BCRYPT_MD2_ALGORITHM, 16},
                                                           {BCRYPT_MD4_ALGORITHM, 16},
                                                           {BCRYPT_MD5_ALGORITHM, 16},
                                                           {BCRYPT_SHA1_ALGORITHM, 20},
                                                           {BCRYPT_SHA256_ALGORITHM, 32},
                                                           {BCRYPT_SHA512_ALGORITHM, 64}}};
    return kAlgorithms.at(static_cast<std::size_t>(kind));
}

void require(NTSTATUS status) {
    if (status < 0) throw std::runtime_error("the system refuses to compute a digest");
}

class Provider {
public:
    explicit Provider(const wchar_t* name) {
        require(BCryptOpenAlgorithmProvider(&handle_, name, nullptr, 0));
    }
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;
    ~Provider() { BCryptCloseAlgorithmProvider(handle_, 0); }

    [[nodiscard]] BCRYPT_ALG_HANDLE handle() const { return handle_; }

private:
    BCRYPT_ALG_HANDLE handle_ = nullptr;
};

class Hash {
public:
    explicit Hash(const Provider& provider) {
        require(BCryptCreateHash(provider.handle(), &handle_, nullptr, 0, nullptr, 0, 0));
    }
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;
    ~Hash() { BCryptDestroyHash(handle_); }

    [[nodiscard]] BCRYPT_HASH_HANDLE handle() const { return handle_; }

private:
    BCRYPT_HASH_HANDLE handle_ = nullptr;
};

}  // namespace

std::string digestOf(DigestKind kind, std::string_view bytes) {
    const Algorithm algorithm = algorithmOf(kind);
    const Provider provider(algorithm.name);
    const Hash hash(provider);
    std::string data(bytes);  // what is read is not said to be constant
    require(BCryptHashData(hash.handle(), reinterpret_cast<PUCHAR>(data.data()),
                           static_cast<ULONG>(data.size()), 0));
    std::string digest(algorithm.bytes, '\0');
    require(BCryptFinishHash(hash.handle(), reinterpret_cast<PUCHAR>(digest.data()),
                             static_cast<ULONG>(digest.size()), 0));
    return digest;
}

}  // namespace kap::platform
