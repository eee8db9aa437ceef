#pragma once

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace kap::test {

constexpr std::uint32_t kUsualSeed = 20030512;

// The seed of a random test, told on standard output. It is the same in every run, so that a change
// is judged by what it changes; KAPUTIL_TEST_SEED=<number> chooses another one,
// KAPUTIL_TEST_SEED=random a new one at each call.
inline std::uint32_t randomSeed() {
    std::uint32_t seed = kUsualSeed;
    const char* given = std::getenv("KAPUTIL_TEST_SEED");  // NOLINT(concurrency-mt-unsafe)
    const std::string_view chosen = given == nullptr ? "" : given;
    if (chosen == "random") {
        seed = std::random_device{}();
    } else if (!chosen.empty()) {
        const auto [end, error] =
            std::from_chars(chosen.data(), chosen.data() + chosen.size(), seed);
        if (error != std::errc{} || end != chosen.data() + chosen.size()) {
            throw std::invalid_argument("KAPUTIL_TEST_SEED is a number of 32 bits or \"random\"");
        }
    }
    std::cout << "KAPUTIL_TEST_SEED=" << seed << '\n';
    return seed;
}

}  // namespace kap::test
