#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "support/seed.hpp"

namespace kap::test {

// How long the random tests of this folder go on: KAPUTIL_FAULT_SECONDS, or a moment.
inline std::chrono::milliseconds timeForFaults() {
    const char* seconds = std::getenv("KAPUTIL_FAULT_SECONDS");
    return seconds == nullptr ? std::chrono::milliseconds(1500)
                              : std::chrono::seconds(std::atoi(seconds));
}

// Runs `test(seed)` with one seed after the other until the time is over or something has failed.
// The first is randomSeed(); what fails shows its own.
template <class Test>
void withRandomSeeds(Test test) {
    std::uint32_t seed = randomSeed();
    const auto end = std::chrono::steady_clock::now() + timeForFaults();
    int runs = 0;
    do {
        SCOPED_TRACE("KAPUTIL_TEST_SEED=" + std::to_string(seed));
        test(seed);
        ++runs;
        ++seed;
    } while (std::chrono::steady_clock::now() < end && !testing::Test::HasFailure());
    testing::Test::RecordProperty("runs", runs);
    std::printf("%d runs, the last with KAPUTIL_TEST_SEED=%u\n", runs, seed - 1);
}

}  // namespace kap::test
