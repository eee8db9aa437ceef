#include <kaputil/platform/two_second_wait.hpp>

#include <gtest/gtest.h>

#include <vector>

namespace kap::platform {
namespace {

// How many times the wait looked at a clock that shows these seconds one after the other.
std::size_t looks(const std::vector<int>& seconds) {
    std::size_t count = 0;
    waitTwoSeconds([&] { return seconds.at(count++); });
    return count;
}

TEST(TwoSecondWait, EndsWhenTheSecondIsTwoFurther) {
    EXPECT_EQ(looks({10, 10, 11, 11, 12, 13}), 5U);
    EXPECT_EQ(looks({10, 10, 25}), 3U);
}

TEST(TwoSecondWait, ReturnsAtOnceInTheLastTwoSecondsOfAMinute) {
    EXPECT_EQ(looks({58, 58}), 2U);
    EXPECT_EQ(looks({59, 59}), 2U);
    EXPECT_EQ(looks({57, 57, 58, 59, 0}), 4U);
}

TEST(TwoSecondWait, CountsFromZeroWhenTheMinuteEndsBetweenTwoLooks) {
    EXPECT_EQ(looks({59, 0, 1, 2}), 4U);
}

TEST(TwoSecondWait, GoesOnIntoTheNextMinuteWhenItMissedTheEndOfThisOne) {
    EXPECT_EQ(looks({57, 57, 0, 30, 58, 59}), 6U);
}

}  // namespace
}  // namespace kap::platform
