#include <kaputil/platform/two_second_wait.hpp>

#include <chrono>

namespace kap::platform {
namespace {

// Seconds tick alike in every time zone.
int secondOfTheTime() {
    using std::chrono::seconds;
    const auto now = std::chrono::floor<seconds>(std::chrono::system_clock::now());
    return static_cast<int>(now.time_since_epoch().count() % 60);
}

}  // namespace

void waitTwoSeconds(const SecondClock& currentSecond) {
    constexpr int kFirstThatCannotBeReached = 58;
    constexpr int kWait = 2;
    int start = currentSecond();
    if (start >= kFirstThatCannotBeReached) {
        start = 0;
    }
    while (currentSecond() - start < kWait) {
    }
}

void waitTwoSeconds() {
    waitTwoSeconds(secondOfTheTime);
}

}  // namespace kap::platform
