#include <gtest/gtest.h>

#include "support/number_digest.hpp"

namespace kap {
namespace {

TEST(Numbers, AreRoundedAndConvertedToTheSameBitsInEveryBuild) {
    EXPECT_EQ(test::numberDigest(), test::kNumberDigest);
}

}  // namespace
}  // namespace kap
