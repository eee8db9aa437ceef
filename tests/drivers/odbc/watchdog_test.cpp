#include "drivers/odbc/watchdog.hpp"

#include <gtest/gtest.h>

#include <future>

namespace kap::ado::odbc {
namespace {

using std::chrono::milliseconds;

// Tells when it has been called; whoever waits for that gives up at some time.
class Ended {
public:
    [[nodiscard]] Watchdog watchdog() {
        return Watchdog([this] {
            if (++count_ == 1) {
                first_.set_value();
            }
        });
    }
    [[nodiscard]] bool happens() {
        return first_.get_future().wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    }
    [[nodiscard]] int count() const { return count_; }

private:
    std::atomic<int> count_{0};
    std::promise<void> first_;
};

TEST(Watchdog, EndsWhatTakesLongerThanItsLimit) {
    Ended ended;
    Watchdog watchdog = ended.watchdog();
    const Watchdog::Limit limit(watchdog, milliseconds(1));
    EXPECT_TRUE(ended.happens());
    EXPECT_TRUE(watchdog.hasFired());
}

TEST(Watchdog, LeavesAloneWhatHasNoLimit) {
    Ended ended;
    Watchdog watchdog = ended.watchdog();
    {
        const Watchdog::Limit limit(watchdog, milliseconds(0));
        const Watchdog::Limit within(watchdog, milliseconds(1));
        std::this_thread::sleep_for(milliseconds(30));
    }
    EXPECT_EQ(ended.count(), 0);
}

TEST(Watchdog, LeavesAloneWhatEndsInTime) {
    Ended ended;
    Watchdog watchdog = ended.watchdog();
    for (int i = 0; i < 1000; ++i) {
        const Watchdog::Limit limit(watchdog, std::chrono::hours(1));
    }
    std::this_thread::sleep_for(milliseconds(5));
    EXPECT_FALSE(watchdog.hasFired());
}

TEST(Watchdog, WakesForAShorterLimitThanTheOneBefore) {
    Ended ended;
    Watchdog watchdog = ended.watchdog();
    { const Watchdog::Limit limit(watchdog, std::chrono::hours(1)); }
    const Watchdog::Limit limit(watchdog, milliseconds(1));
    EXPECT_TRUE(ended.happens());
}

TEST(Watchdog, GoesOnUntilTheCallHasComeBack) {
    Ended ended;
    Watchdog watchdog = ended.watchdog();
    const Watchdog::Limit limit(watchdog, milliseconds(1));
    for (int i = 0; i < 30000 && ended.count() < 2; ++i) {
        std::this_thread::sleep_for(milliseconds(1));
    }
    EXPECT_GE(ended.count(), 2);
}

}  // namespace
}  // namespace kap::ado::odbc
