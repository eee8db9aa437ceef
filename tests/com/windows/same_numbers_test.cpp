// The numbers of this build beside those of the other hosts.
#include <gtest/gtest.h>

#include "support/number_digest.hpp"

namespace kap::test {
namespace {

TEST(Numbers, AreRoundedAndConvertedToTheSameBitsAsOnOtherHosts) {
    EXPECT_EQ(numberDigest(), kNumberDigest);
}

}  // namespace
}  // namespace kap::test
