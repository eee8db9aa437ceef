// Whole numbers of 128 bits beside those of the compiler.
#include <gtest/gtest.h>

#include <random>

#include "base/wide_integer.hpp"
#include "support/seed.hpp"

namespace kap {
namespace {

#ifdef __SIZEOF_INT128__

__extension__ using Native = __int128;
__extension__ using Unsigned = unsigned __int128;

WideInteger wide(Native value) {
    return WideInteger(static_cast<std::int64_t>(value >> 64)) << 64 |
           WideInteger(static_cast<std::uint64_t>(value));
}

// Of every size, and often near a power of two, where things go wrong.
Native number(std::mt19937_64& random) {
    const auto whole = static_cast<Native>(static_cast<Unsigned>(random()) << 64 | random());
    const Native shifted = whole >> (random() % 128);
    return random() % 4 == 0 ? static_cast<Native>((Unsigned{1} << (random() % 128)) - random() % 3)
                             : shifted;
}

TEST(WideInteger, ComputesAsTheCompilersDo) {
    std::mt19937_64 random(test::randomSeed());
    for (int i = 0; i < 20000; ++i) {
        const Native a = number(random);
        const Native b = number(random);
        const auto unsignedA = static_cast<Unsigned>(a);
        const auto unsignedB = static_cast<Unsigned>(b);
        ASSERT_EQ(wide(static_cast<Native>(unsignedA + unsignedB)), wide(a) + wide(b));
        ASSERT_EQ(wide(static_cast<Native>(unsignedA - unsignedB)), wide(a) - wide(b));
        ASSERT_EQ(wide(static_cast<Native>(unsignedA * unsignedB)), wide(a) * wide(b));
        ASSERT_EQ(a < b, wide(a) < wide(b));
        const int bits = static_cast<int>(random() % 128);
        ASSERT_EQ(wide(static_cast<Native>(unsignedA << bits)), wide(a) << bits);
        ASSERT_EQ(wide(a >> bits), wide(a) >> bits);
        const bool divides = b != 0 && !(b == -1 && a == static_cast<Native>(Unsigned{1} << 127));
        if (divides) {
            ASSERT_EQ(wide(a / b), wide(a) / wide(b));
            ASSERT_EQ(wide(a % b), wide(a) % wide(b));
        }
        ASSERT_EQ(static_cast<double>(a), static_cast<double>(wide(a)));
        Native result = 0;
        WideInteger ours;
        ASSERT_EQ(__builtin_add_overflow(a, b, &result),
                  WideInteger::addOverflows(wide(a), wide(b), ours));
        ASSERT_EQ(__builtin_mul_overflow(a, b, &result),
                  WideInteger::multiplyOverflows(wide(a), wide(b), ours));
    }
}

#endif

TEST(WideInteger, TakesNumbersOfEveryWidth) {
    EXPECT_EQ(WideInteger(-1), WideInteger(std::int64_t{-1}));
    EXPECT_LT(WideInteger(-1), WideInteger(std::uint64_t{0}));
    EXPECT_EQ(WideInteger(std::uint64_t{1} << 63), WideInteger(1) << 63);
    EXPECT_EQ(-5, static_cast<std::int64_t>(WideInteger(-5)));
}

}  // namespace
}  // namespace kap
