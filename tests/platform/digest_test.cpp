#include "platform/digest.hpp"

#include <string>

#include <gtest/gtest.h>

namespace kap::platform {
namespace {

std::string hexDigest(DigestKind kind, std::string_view bytes) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char byte : digestOf(kind, bytes)) {
        const auto value = static_cast<unsigned char>(byte);
        text += kDigits[value >> 4];
        text += kDigits[value & 0xF];
    }
    return text;
}

// The examples that the algorithms were published with.
TEST(Digest, IsThatOfThePublishedExamples) {
    EXPECT_EQ(hexDigest(DigestKind::Md2, "abc"), "da853b0d3f88d99b30283a69e6ded6bb");
    EXPECT_EQ(hexDigest(DigestKind::Md4, "abc"), "a448017aaf21d8525fc10ae87aa6729d");
    EXPECT_EQ(hexDigest(DigestKind::Md5, "abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(hexDigest(DigestKind::Sha1, "abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hexDigest(DigestKind::Sha256, "abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hexDigest(DigestKind::Sha512, "abc"),
              "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
              "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
}

TEST(Digest, OfNothingAndOfManyBytesHasItsLength) {
    EXPECT_EQ(hexDigest(DigestKind::Md5, ""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hexDigest(DigestKind::Sha1, std::string(1000000, 'a')),
              "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

}  // namespace
}  // namespace kap::platform
