#include "automation/convert/scaled_text.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace kap::plain {
namespace {

TEST(ScaledText, WritesWholeNumbersAsTheyAre) {
    EXPECT_EQ(ScaledText(0).view(), "0");
    EXPECT_EQ(ScaledText(-7).view(), "-7");
    EXPECT_EQ(ScaledText(1234567).view(), "1234567");
    EXPECT_EQ(ScaledText(std::numeric_limits<std::int64_t>::max()).view(), "9223372036854775807");
    EXPECT_EQ(ScaledText(std::numeric_limits<std::int64_t>::min()).view(), "-9223372036854775808");
}

TEST(ScaledText, WritesAllDigitsBehindThePointThatTheScaleAsksFor) {
    EXPECT_EQ(ScaledText(-1250, 2).view(), "-12.50");
    EXPECT_EQ(ScaledText(5, 3).view(), "0.005");
    EXPECT_EQ(ScaledText(-5, 1).view(), "-0.5");
    EXPECT_EQ(ScaledText(0, 2).view(), "0.00");
    EXPECT_EQ(ScaledText(std::numeric_limits<std::int64_t>::min(), 19).view(),
              "-0.9223372036854775808");
    EXPECT_EQ(ScaledText(-1, ScaledText::kMostScale).view(),
              "-0.00000000000000000000000000000000000001");
}

TEST(ScaledText, WritesThePointThatIsGiven) {
    EXPECT_EQ(ScaledText(1250, 3, ',').view(), "1,250");
}

}  // namespace
}  // namespace kap::plain
