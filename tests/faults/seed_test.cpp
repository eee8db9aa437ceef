// Which seed a random test takes.
#include "support/seed.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <stdexcept>

#include "support/scoped_variable.hpp"

namespace kap::test {
namespace {

constexpr const char* kVariable = "KAPUTIL_TEST_SEED";

TEST(Seed, IsUsuallyTheSame) {
    const ScopedVariable none(kVariable, {});
    EXPECT_EQ(randomSeed(), kUsualSeed);
    EXPECT_EQ(randomSeed(), kUsualSeed);
}

TEST(Seed, IsTheOneThatWasChosen) {
    const ScopedVariable chosen(kVariable, "4294967295");
    EXPECT_EQ(randomSeed(), 4294967295U);
}

TEST(Seed, IsNewEachTimeWhenRandomOnesAreWanted) {
    const ScopedVariable chosen(kVariable, "random");
    std::set<std::uint32_t> seeds;
    for (int i = 0; i < 20; ++i) {
        seeds.insert(randomSeed());
    }
    EXPECT_GT(seeds.size(), 15U);
}

TEST(Seed, IsNotGuessedFromWhatIsNone) {
    for (const char* text : {"4294967296", "-1", "7x", "Random", " 7"}) {
        const ScopedVariable chosen(kVariable, text);
        EXPECT_THROW(randomSeed(), std::invalid_argument) << text;
    }
}

}  // namespace
}  // namespace kap::test
