#include "base/power.hpp"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace kap {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(PowersOfTen, AreTheNearestDoubles) {
    for (int exponent = -330; exponent <= 308; ++exponent) {
        const std::string text = "1e" + std::to_string(exponent);
        double nearest = 0;
        std::from_chars(text.data(), text.data() + text.size(), nearest);
        EXPECT_EQ(powerOfTen(exponent), nearest) << text;
        EXPECT_EQ(power(10, exponent), nearest) << text;
    }
}

TEST(PowersOfTen, AreZeroAndInfinityBeyondTheDoubles) {
    EXPECT_EQ(powerOfTen(-324), 0);
    EXPECT_EQ(powerOfTen(-32768), 0);
    EXPECT_EQ(powerOfTen(309), kInfinity);
    EXPECT_EQ(powerOfTen(32767), kInfinity);
}

TEST(WholePowers, AreExactWhereADoubleHoldsThem) {
    double two = 1;
    for (int exponent = 0; exponent <= 1023; ++exponent, two *= 2) {
        EXPECT_EQ(power(2, exponent), two);
        EXPECT_EQ(power(-2, exponent), exponent % 2 == 0 ? two : -two);
        EXPECT_EQ(power(2, -exponent), 1 / two);
    }
    EXPECT_EQ(power(3, 33), 5559060566555523);
    EXPECT_EQ(power(-7, 17), -232630513987207);
    EXPECT_EQ(power(2.5, 3), 15.625);
    EXPECT_EQ(power(1, 1048576), 1);
}

// The nearest doubles of numbers computed with many digits.
TEST(WholePowers, AreTheNearestDoublesOfTheOthers) {
    EXPECT_EQ(power(1.05, 10), 1.628894626777442);
    EXPECT_EQ(power(1.05, -10), 0.6139132535407591);
    EXPECT_EQ(power(0.1, 3), 0.0010000000000000002);
    EXPECT_EQ(power(3, -1), 1.0 / 3);
    EXPECT_EQ(power(1.0000001, 1000000), 1.1051709126143208);
    EXPECT_EQ(power(7, 300), 3.38385702007491e253);
    EXPECT_EQ(power(7, -300), 2.955207605012408e-254);
}

TEST(WholePowers, PassTheEndsOfTheDoubles) {
    EXPECT_EQ(power(3, 647), kInfinity);
    EXPECT_EQ(power(-3, 647), -kInfinity);
    EXPECT_EQ(power(3, -700), 0);
    EXPECT_EQ(power(2, -1074), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(power(1e300, 1000000), kInfinity);
    EXPECT_EQ(power(1e-300, 1000000), 0);
}

TEST(Powers, AreTheUsualOnesOtherwise) {
    EXPECT_EQ(power(0, 0), 1);
    EXPECT_EQ(power(0, 5), 0);
    EXPECT_EQ(power(0, -1), kInfinity);
    EXPECT_EQ(power(kInfinity, -2), 0);
    EXPECT_EQ(power(4, 0.5), 2);
    EXPECT_TRUE(std::isnan(power(-1, 0.5)));
    EXPECT_EQ(power(2, 1e300), kInfinity);
}

TEST(ExactProducts, TellWhatTheDoubleLost) {
    const ExactProduct product = exactProduct(0.1, 10000);
    EXPECT_EQ(product.high, 1000);
    EXPECT_EQ(product.low, 5.551115123125783e-14);
    EXPECT_EQ(exactProduct(0.25, 10000).low, 0);
    EXPECT_EQ(exactProduct(-0.1, 10000).low, -5.551115123125783e-14);
}

}  // namespace
}  // namespace kap
