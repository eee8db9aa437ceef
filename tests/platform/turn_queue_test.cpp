#include "platform/turn_queue.hpp"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::platform {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kLong{60'000};

class TurnQueueTest : public testing::Test {
protected:
    TurnQueueTest() { EXPECT_TRUE(first_.enter(kLong)); }

    [[nodiscard]] std::string file() const { return folder_.file("azienda.db"); }

    test::TemporaryFolder folder_;
    TurnQueue first_{file()};
};

TEST_F(TurnQueueTest, LetsTheNextInWhenTheFirstLeaves) {
    TurnQueue second(file());
    EXPECT_FALSE(second.enter(milliseconds(5)));
    first_.leave();
    EXPECT_TRUE(second.enter(kLong));
    EXPECT_FALSE(first_.enter(milliseconds(5)));
}

TEST_F(TurnQueueTest, IsEnteredOnceHoweverOftenItIsAskedFor) {
    EXPECT_TRUE(first_.enter(milliseconds(5)));
    first_.leave();
    first_.leave();
    TurnQueue second(file());
    EXPECT_TRUE(second.enter(kLong));
}

TEST_F(TurnQueueTest, IsLeftByAnObjectThatGoes) {
    {
        first_.leave();
        TurnQueue passing(file());
        EXPECT_TRUE(passing.enter(kLong));
    }
    EXPECT_TRUE(first_.enter(kLong));
}

TEST_F(TurnQueueTest, IsLeftByAProcessThatDies) {
    first_.leave();
    const pid_t child = fork();
    if (child == 0) {
        TurnQueue doomed(file());
        const bool entered = doomed.enter(kLong);
        if (entered) kill(getpid(), SIGKILL);
        _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(first_.enter(kLong));
}

TEST_F(TurnQueueTest, ServesEveryThreadOnceAtATime) {
    first_.leave();
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 50; ++turn) {
                TurnQueue queue(file());
                EXPECT_TRUE(queue.enter(kLong));
                most = std::max(most.load(), ++inside);
                --inside;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(most, 1);
}

TEST_F(TurnQueueTest, TellsWhetherAnybodyIsThere) {
    const TurnQueue other(file());
    EXPECT_TRUE(other.isBusy());
    first_.leave();
    EXPECT_FALSE(other.isBusy());
    EXPECT_FALSE(TurnQueue(folder_.file("altra.db")).isBusy());
}

TEST_F(TurnQueueTest, TellsOfATurnThatNobodyMayGoPastUntilItEnds) {
    const TurnQueue other(file());
    EXPECT_FALSE(other.isReserved());
    first_.reserve();
    first_.reserve();
    EXPECT_TRUE(other.isReserved());
    first_.leave();
    EXPECT_FALSE(other.isReserved());
    EXPECT_FALSE(other.isBusy());
    first_.reserve();  // without a turn there is nothing to mark
    EXPECT_FALSE(other.isReserved());
}

TEST_F(TurnQueueTest, IsAnotherOneForEveryFile) {
    constexpr int kFiles = 1000;
    for (int i = 0; i < kFiles; ++i) {
        const std::string name = folder_.file("azienda" + std::to_string(i) + ".db");
        test::putFile(name, "");
        TurnQueue other(name);
        EXPECT_TRUE(other.enter(milliseconds(0))) << name;
    }
}

TEST_F(TurnQueueTest, GoesOnWhenTheLastOneHasTakenItAway) {
    TurnQueue second(file());
    EXPECT_FALSE(second.enter(milliseconds(1)));
    first_.leave();
    {
        TurnQueue third(file());
        EXPECT_TRUE(third.enter(kLong));
    }
    EXPECT_TRUE(second.enter(kLong));
    EXPECT_FALSE(first_.enter(milliseconds(1)));
}

}  // namespace
}  // namespace kap::platform
