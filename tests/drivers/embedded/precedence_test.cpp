// Work that is done again because somebody else was faster.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "drivers/embedded/session_support.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado::embedded {
namespace {

using test::openSession;
using test::rowsOf;

class Precedence : public testing::Test {
protected:
    Precedence() {
        static_cast<void>(first_->execute("CREATE TABLE t (a int) INSERT INTO t VALUES (1)"));
    }

    kap::test::TemporaryFolder folder_;
    std::unique_ptr<Session> first_ = openSession(folder_.file("a.db"));
    std::unique_ptr<Session> other_ = openSession(folder_.file("a.db"));
};

TEST_F(Precedence, KeepsOtherWritersBehindThatWhichReadsAndWrites) {
    auto place = first_->precedence();
    ASSERT_NE(place, nullptr);
    std::atomic<bool> begun = false;
    std::thread writer([&] {
        begun = true;
        static_cast<void>(other_->execute("UPDATE t SET a = a * 10"));
    });
    while (!begun) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // enough to go past, if it could
    EXPECT_EQ("1", rowsOf(*first_, "SELECT a FROM t"));
    static_cast<void>(first_->execute("UPDATE t SET a = 2"));
    place = nullptr;
    writer.join();
    EXPECT_EQ("20", rowsOf(*first_, "SELECT a FROM t"));
}

TEST_F(Precedence, LocksNothing) {
    const auto place = first_->precedence();
    EXPECT_EQ("1", rowsOf(*other_, "SELECT a FROM t"));
    // Who has no time to wait does not wait behind it, and finds the file free.
    const auto hurried = openSession(folder_.file("a.db"), "Lock Timeout=0");
    static_cast<void>(hurried->execute("UPDATE t SET a = 3"));
    EXPECT_EQ("3", rowsOf(*other_, "SELECT a FROM t"));
}

TEST_F(Precedence, IsNotTakenWithinATransaction) {
    first_->begin();
    EXPECT_EQ(nullptr, first_->precedence());
    first_->rollback();
    EXPECT_NE(nullptr, first_->precedence());
}

TEST_F(Precedence, HoldsForOneAfterTheOther) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(nullptr, first_->precedence());
        EXPECT_NE(nullptr, other_->precedence());
    }
}

}  // namespace
}  // namespace kap::ado::embedded
