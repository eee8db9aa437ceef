#include "automation/convert/calendar.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace kap::convert {
namespace {

TEST(Calendar, CountsDaysFrom30December1899) {
    EXPECT_EQ(serialDay({1899, 12, 30}), 0);
    EXPECT_EQ(serialDay({1900, 1, 1}), 2);
    EXPECT_EQ(serialDay({1899, 12, 29}), -1);
    EXPECT_EQ(serialDay({2003, 12, 25}), 37980);
    EXPECT_EQ(serialDay({100, 1, 1}), -657434);
    EXPECT_EQ(serialDay({9999, 12, 31}), 2958465);
}

TEST(Calendar, FindsTheDateOfEveryDay) {
    for (int serial = -657434; serial <= 2958465; serial += 97) {
        ASSERT_EQ(serialDay(civilDate(serial)), serial);
    }
    EXPECT_EQ(civilDate(59), (CivilDate{1900, 2, 27}));
}

TEST(Calendar, KnowsLeapYears) {
    EXPECT_EQ(daysInMonth(2000, 2), 29);
    EXPECT_EQ(daysInMonth(1900, 2), 28);
    EXPECT_EQ(daysInMonth(2004, 2), 29);
    EXPECT_EQ(daysInMonth(2003, 4), 30);
    EXPECT_TRUE(isValid({2004, 2, 29}));
    for (const CivilDate date :
         {CivilDate{2003, 2, 29}, CivilDate{2003, 13, 1}, CivilDate{2003, 0, 1},
          CivilDate{2003, 1, 0}, CivilDate{99, 1, 1}, CivilDate{10000, 1, 1}}) {
        EXPECT_FALSE(isValid(date)) << date.year << '-' << date.month << '-' << date.day;
    }
}

TEST(Calendar, CountsTheTimeAwayFromZeroBeforeTheOrigin) {
    EXPECT_EQ(makeDate({1899, 12, 29}, {6, 0, 0}).days, -1.25);
    EXPECT_EQ(makeDate({1899, 12, 31}, {6, 0, 0}).days, 1.25);
    const auto parts = takeApart({-1.25});
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->date, (CivilDate{1899, 12, 29}));
    EXPECT_EQ(parts->time, (TimeOfDay{6, 0, 0}));
}

TEST(Calendar, PutsDatesBeforeTheOriginOnAnUnbrokenLine) {
    EXPECT_EQ(linearDays({-1.25}), -0.75);
    EXPECT_EQ(fromLinearDays(-0.75).days, -1.25);
    EXPECT_EQ(linearDays({1.25}), 1.25);
    EXPECT_EQ(fromLinearDays(-2).days, -2);
}

TEST(Calendar, SplitsADateIntoItsDayAndTheUnitsSinceMidnight) {
    const auto morning = split({-1.25}, 24);
    ASSERT_TRUE(morning);
    EXPECT_EQ(morning->serialDay, -1);
    EXPECT_EQ(morning->units, 6);
    const auto behindTheLast = split({2958465.999}, 24);
    ASSERT_TRUE(behindTheLast);
    EXPECT_EQ(behindTheLast->serialDay, 2958466);
    EXPECT_EQ(behindTheLast->units, 0);
    EXPECT_FALSE(split({2958466.0}, 24));
    EXPECT_FALSE(split({-657435.0}, 24));
    EXPECT_FALSE(split({std::numeric_limits<double>::quiet_NaN()}, 24));
}

TEST(Calendar, RoundsTheTimeToTheSecond) {
    const auto midnight = takeApart({37980.999999});
    ASSERT_TRUE(midnight);
    EXPECT_EQ(midnight->date, (CivilDate{2003, 12, 26}));
    EXPECT_EQ(midnight->time, (TimeOfDay{0, 0, 0}));
    const auto evening = takeApart(makeDate({2003, 12, 25}, {23, 59, 59}));
    ASSERT_TRUE(evening);
    EXPECT_EQ(evening->time, (TimeOfDay{23, 59, 59}));
}

TEST(Calendar, RefusesDatesOutsideItsRange) {
    EXPECT_TRUE(takeApart({-657434}));
    EXPECT_FALSE(takeApart({-657435}));
    EXPECT_TRUE(takeApart({2958465.9}));
    EXPECT_FALSE(takeApart({2958466}));
    EXPECT_FALSE(takeApart({2958465.9999999}));
}

}  // namespace
}  // namespace kap::convert
