#pragma once

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <set>
#include <string>

#include "faults/library/failing_calls.hpp"

namespace kap::test {

// Runs `work(acknowledge)` in a process of its own that is killed at the n-th file call in the
// folder; gives the numbers that it has acknowledged before.
template <class Work>
std::set<int> killedAt(int nth, const std::string& folder, Work work) {
    std::array<int, 2> ends{};
    EXPECT_EQ(0, pipe(ends.data()));
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        faults::start({folder, {}, nth, faults::kKill});
        try {
            work([&](int number) { static_cast<void>(!write(ends[1], &number, sizeof number)); });
        } catch (...) {
            _exit(3);
        }
        _exit(0);
    }
    close(ends[1]);
    std::set<int> acknowledged;
    int number = 0;
    while (read(ends[0], &number, sizeof number) == sizeof number) {
        acknowledged.insert(number);
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
    return acknowledged;
}

}  // namespace kap::test
