#include "platform/gzip/gzip.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>

#include "support/seed.hpp"

namespace kap::platform {
namespace {

constexpr std::size_t kAny = 1'000'000;

// Bytes that repeat more or less.
std::string randomBytes(std::mt19937& random) {
    const unsigned kinds = 1U << (random() % 9U);
    std::string bytes(random() % 200'000U, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() % kinds);
    }
    return bytes;
}

TEST(Gzip, GivesBackWhatWasCompressed) {
    std::mt19937 random(test::randomSeed());
    EXPECT_EQ(decompressed(compressed(""), kAny), "");
    for (int round = 0; round < 20; ++round) {
        const std::string bytes = randomBytes(random);
        EXPECT_EQ(decompressed(compressed(bytes), kAny), bytes);
    }
}

TEST(Gzip, MakesShortBytesOfWhatRepeats) {
    EXPECT_LT(compressed(std::string(100'000, 'x')).size(), 200U);
}

TEST(Gzip, TellsNoHostInItsHeader) {
    EXPECT_EQ(compressed("x").substr(0, 10), std::string("\x1F\x8B\x08\0\0\0\0\0\0\0", 10));
}

TEST(Gzip, ReadsSeveralOneBehindAnother) {
    EXPECT_EQ(decompressed(compressed("uno") + compressed("") + compressed("due"), kAny), "unodue");
}

TEST(Gzip, RefusesBytesThatAreCutOrBroken) {
    const std::string whole = compressed("uno due tre quattro cinque sei sette otto nove dieci");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(decompressed(whole.substr(0, length), kAny)) << length;
    }
    for (std::size_t at = 10; at < whole.size(); ++at) {  // behind the header
        std::string broken = whole;
        broken[at] = static_cast<char>(broken[at] ^ 1);
        EXPECT_FALSE(decompressed(broken, kAny)) << at;
    }
    EXPECT_FALSE(decompressed(whole + "x", kAny));
    EXPECT_FALSE(decompressed("no such format", kAny));
}

TEST(Gzip, RefusesWhatStandsForTooMuch) {
    const std::string bytes(100'000, 'x');
    EXPECT_EQ(decompressed(compressed(bytes), bytes.size()), bytes);
    EXPECT_FALSE(decompressed(compressed(bytes), bytes.size() - 1));
}

}  // namespace
}  // namespace kap::platform
