#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "faults/progress.hpp"
#include "support/seed.hpp"

namespace kap::test {

// How long the random tests of this folder go on: KAPUTIL_FAULT_SECONDS, or a moment.
inline std::chrono::milliseconds timeForFaults() {
    const char* seconds = std::getenv("KAPUTIL_FAULT_SECONDS");
    return seconds == nullptr ? std::chrono::milliseconds(1500)
                              : std::chrono::seconds(std::atoi(seconds));
}

// Runs `test(seed)` with one seed after the other until the time is over or something has failed.
// The first is randomSeed(); what fails shows its own. `figures()` says what was seen besides.
template <class Test, class Figures>
void withRandomSeeds(Test test, Figures figures) {
    std::uint32_t seed = randomSeed();
    const auto end = std::chrono::steady_clock::now() + timeForFaults();
    int runs = 0;
    const auto told = [&] {
        return std::to_string(runs) +
               " runs, the last with KAPUTIL_TEST_SEED=" + std::to_string(seed - 1) + figures();
    };
    Progress progress;
    do {
        SCOPED_TRACE("KAPUTIL_TEST_SEED=" + std::to_string(seed));
        test(seed);
        ++runs;
        ++seed;
        progress.tell(told);
    } while (std::chrono::steady_clock::now() < end && !testing::Test::HasFailure());
    testing::Test::RecordProperty("runs", runs);
    std::printf("%s\n", told().c_str());
}

template <class Test>
void withRandomSeeds(Test test) {
    withRandomSeeds(test, [] { return std::string(); });
}

}  // namespace kap::test
