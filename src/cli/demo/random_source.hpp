#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace kap::cli {

// Random choices that are the same on every machine for the same seed: the standard library fixes
// what the engine gives, but not what its distributions make of it.
class RandomSource {
public:
    explicit RandomSource(std::uint64_t seed) : engine_(seed) {}

    // A number from 0 to `count` - 1, each equally likely.
    std::uint64_t below(std::uint64_t count) {
        const std::uint64_t tail = std::mt19937_64::max() % count;
        std::uint64_t drawn = engine_();
        while (drawn > std::mt19937_64::max() - tail - 1) {
            drawn = engine_();
        }
        return drawn % count;
    }

    // A number from `low` to `high`, both included.
    std::int64_t between(std::int64_t low, std::int64_t high) {
        return low + static_cast<std::int64_t>(below(static_cast<std::uint64_t>(high - low) + 1));
    }

    bool chance(std::uint64_t percent) {
        constexpr std::uint64_t kHundred = 100;
        return below(kHundred) < percent;
    }

    template <class Container>
    const auto& oneOf(const Container& choices) {
        return choices[static_cast<std::size_t>(below(choices.size()))];
    }

private:
    std::mt19937_64 engine_;
};

}  // namespace kap::cli
