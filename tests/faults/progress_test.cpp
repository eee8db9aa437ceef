// What a long run tells while it is under way.
#include "faults/progress.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace kap::test {
namespace {

std::string toldBy(Progress progress) {
    testing::internal::CaptureStdout();
    for (const char* figures : {"7 runs", "9 runs"}) {
        progress.tell([&] { return std::string(figures); });
    }
    return testing::internal::GetCapturedStdout();
}

TEST(Progress, TellsNothingBeforeItIsTime) {
    EXPECT_EQ("", toldBy(Progress()));
}

TEST(Progress, TellsTheFiguresOfTheMoment) {
    EXPECT_EQ("after 0 s: 7 runs\nafter 0 s: 9 runs\n", toldBy(Progress(std::chrono::seconds(0))));
}

}  // namespace
}  // namespace kap::test
